#pragma once

#include <QString>
#include <QStringList>
#include <VXUILib/vxdata_export.h>
#include <memory>

namespace vx {

class Driver;
class Recordset;
class RowAppender;

enum class SchemaKind { Tables = 20, ProviderTypes = 22 };

// A connection to a repository. Copies share one session, as references to the platform's
// connection object do; the session closes when the last copy and record set let go.
class VXDATA_EXPORT Connection {
public:
    Connection();
    ~Connection();
    Connection(const Connection&);
    Connection& operator=(const Connection&);
    Connection(Connection&&) noexcept;
    Connection& operator=(Connection&&) noexcept;

    // The text the controls build: "File Name=<data-link file>;Jet OLEDB:Database Password = '...'"
    // or an init string naming the provider directly ("Provider=SQLite;Data Source=...").
    void open(const QString& connectionText, const QString& user = {},
              const QString& password = {});
    void close();
    bool isOpen() const;
    QString connectionText() const;
    QString providerName() const;

    // Runs one statement that returns no rows; returns the rows affected (-1 when unknown).
    // Text after the statement's ";" is refused (SyntaxError), as record-set opens refuse it.
    qint64 execute(const QString& sql);

    void beginTrans();
    void commitTrans();
    void rollbackTrans();
    int transactionLevel() const;

    // Appends rows to `table` much faster than a record set (see RowAppender); the appender
    // keeps the session open while it lives.
    std::unique_ptr<RowAppender> appendRows(const QString& table, const QStringList& columns);

    // "Tables": TABLE_NAME, TABLE_TYPE. "ProviderTypes": TYPE_NAME, DATA_TYPE, COLUMN_SIZE,
    // LITERAL_PREFIX, LITERAL_SUFFIX, BEST_MATCH.
    Recordset openSchema(SchemaKind kind);

    // The engine behind an open connection; throws ObjectClosed otherwise.
    Driver& driver() const;

private:
    struct Private;
    std::shared_ptr<Private> d;
};

// Rolls back in its destructor unless committed.
class VXDATA_EXPORT Transaction {
public:
    explicit Transaction(Connection connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Connection m_connection;
    bool m_open = true;
};

} // namespace vx
