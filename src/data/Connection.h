#pragma once

#include <QString>
#include <QStringList>
#include <VXUILib/vxdata_export.h>
#include <memory>

namespace vx {

class Driver;
class Recordset;
class RowAppender;

/// The schema rowsets Connection::openSchema returns.
enum class SchemaKind {
    Tables = 20,       ///< The repository's tables and views.
    ProviderTypes = 22 ///< The engine's data types with their sizes and literal quoting.
};

/// What a statement failing inside a transaction undoes.
enum class TransactionKind {
    /// Itself alone, and the transaction goes on, as the old engine behaved (a server pays a
    /// savepoint per statement for it).
    StatementRollback,
    /// The whole transaction, which the caller then rolls back: enough for a unit of work that
    /// is undone whole on any failure.
    AllOrNothing
};

/// A connection to a repository (SQLite file or PostgreSQL database), opened from the text the
/// controls build or from a provider init string. Copies share one session, as references to
/// the platform's connection object do; the session closes when the last copy and record set
/// let go. Every failure throws vx::Error.
class VXDATA_EXPORT Connection {
public:
    /// A closed connection.
    Connection();
    /// Lets go of the session; it closes with the last copy and record set.
    ~Connection();
    /// Another handle on the same session.
    Connection(const Connection&);
    /// Makes this a handle on the other's session.
    Connection& operator=(const Connection&);
    /// Takes over the other's session; the other is left closed.
    Connection(Connection&&) noexcept;
    /// Takes over the other's session; the other is left closed.
    Connection& operator=(Connection&&) noexcept;

    /// Opens the repository. The text the controls build: "File Name=<data-link
    /// file>;Jet OLEDB:Database Password = '...'", or an init string naming the provider
    /// directly ("Provider=SQLite;Data Source=..."). An unsupported provider is refused with a
    /// message naming the supported ones.
    void open(const QString& connectionText, const QString& user = {},
              const QString& password = {});
    /// Closes this handle's session; record sets opened on it keep their rows.
    void close();
    /// True between a successful open and close.
    bool isOpen() const;
    /// The text the connection was opened with.
    QString connectionText() const;
    /// The provider the data link names ("SQLite", "PostgreSQL" ...).
    QString providerName() const;

    /// Runs one statement that returns no rows; returns the rows affected (-1 when unknown).
    /// Text after the statement's ";" is refused (SyntaxError), as record-set opens refuse it.
    qint64 execute(const QString& sql);

    /// Starts a transaction, nested inside the current one if any.
    void beginTrans(TransactionKind kind = TransactionKind::StatementRollback);
    /// Commits the innermost transaction.
    void commitTrans();
    /// Rolls back the innermost transaction.
    void rollbackTrans();
    /// How many transactions are open (0 outside any).
    int transactionLevel() const;

    /// \cond internal
    // Appends rows to `table` much faster than a record set (see RowAppender); the appender
    // keeps the session open while it lives.
    std::unique_ptr<RowAppender> appendRows(const QString& table, const QStringList& columns);
    /// \endcond

    /// A schema rowset. Tables: TABLE_NAME, TABLE_TYPE ("TABLE", "VIEW", "SYSTEM TABLE").
    /// ProviderTypes: TYPE_NAME, DATA_TYPE, COLUMN_SIZE, LITERAL_PREFIX, LITERAL_SUFFIX,
    /// BEST_MATCH.
    Recordset openSchema(SchemaKind kind);
    /// Names of the indexes on the repository's tables.
    QStringList indexNames() const;

    /// \cond internal
    // The engine behind an open connection; throws ObjectClosed otherwise.
    Driver& driver() const;
    /// \endcond

private:
    struct Private;
    std::shared_ptr<Private> d;
};

/// A transaction on a connection that rolls back in its destructor unless committed, so an
/// error thrown half way leaves nothing half-written.
class VXDATA_EXPORT Transaction {
public:
    /// Begins a transaction on the connection.
    explicit Transaction(Connection connection,
                         TransactionKind kind = TransactionKind::StatementRollback);
    /// Rolls back unless commit() ran.
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    /// Commits the transaction.
    void commit();

private:
    Connection m_connection;
    bool m_open = true;
};

} // namespace vx
