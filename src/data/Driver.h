#pragma once

#include "data/ConnectionProperties.h"
#include "data/ResultStream.h"
#include "data/RowAppender.h"
#include "data/RowStore.h"

#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>

namespace vx {

struct TableEntry {
    QString name;
    QString type; // "TABLE", "VIEW" or "SYSTEM TABLE"
};

struct ProviderTypeEntry {
    QString typeName;
    DataType dataType = DataType::Empty;
    qint64 columnSize = 0;
    QString literalPrefix;
    QString literalSuffix;
    bool bestMatch = false;
};

// One database engine. Statements arrive in the controls' SQL; the driver's dialect step turns
// them into what its engine accepts. Every failure throws vx::Error.
class Driver {
public:
    virtual ~Driver() = default;

    virtual QString name() const = 0;
    virtual void open(const ConnectionProperties& properties, const QString& user,
                      const QString& password) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    // Rows affected, or -1 when the statement returns none.
    virtual qint64 execute(const QString& sql) = 0;
    // Runs a query and materialises every row, with column types, sizes, base table and column,
    // and which columns form the base table's key.
    virtual std::unique_ptr<RowStore> select(const QString& sql) = 0;
    // A query read a piece at a time (see ResultStream). By default the whole result is read
    // at once and handed out as it is; engines that can, read it as it comes.
    virtual std::unique_ptr<ResultStream> openStream(const QString& sql);
    // The whole table, for table-direct opens; a missing table throws TableNotFound.
    virtual std::unique_ptr<RowStore> selectTable(const QString& table) = 0;
    // The columns of a table-direct open (types, defined sizes, base table, key) with no rows;
    // its cost does not depend on the table's size. A missing table throws TableNotFound.
    // By default the whole table is read and its rows dropped.
    virtual std::unique_ptr<RowStore> tableStructure(const QString& table);
    // The rows of a table-direct open, in table order, a piece at a time, described by
    // tableStructure(table). By default the whole table is read first.
    virtual std::unique_ptr<ResultStream> streamTable(const QString& table);

    // Transactions nest: a transaction begun inside another commits or rolls back on its own.
    virtual void beginTransaction() = 0;
    // A transaction its caller rolls back whole on any failure, so that a failing statement
    // need not undo itself alone; by default an ordinary one.
    virtual void beginAllOrNothingTransaction() { beginTransaction(); }
    virtual void commitTransaction() = 0;
    virtual void rollbackTransaction() = 0;
    // How many transactions are open, 0 outside any (also after the engine dropped one).
    virtual int transactionLevel() const = 0;

    virtual QList<TableEntry> tables() = 0;
    virtual QList<ProviderTypeEntry> providerTypes() = 0;
    // Names of the indexes on the repository's own tables, as the engine spells them (none
    // for engines without indexes).
    virtual QStringList indexNames() { return {}; }

    // Engine sequences hand out ids without waiting for other sessions' transactions, never the
    // same one twice, and do not take an id back when its transaction rolls back. Engines
    // without them answer false here and throw NotSupported from the two below.
    virtual bool hasSequences() const { return false; }
    // Creates `sequence` when it is missing and raises it so that it continues above the
    // highest `column` of `table`; never lowers it.
    virtual void raiseSequence(const QString& sequence, const QString& table,
                               const QString& column);
    // A missing sequence throws TableNotFound.
    virtual qint64 nextSequenceValue(const QString& sequence);

    // Write-back of one row to a base table. The row is found by `keyColumns` = `keyValues`
    // (the original values; a null key value matches null); when the table has no key, every
    // original column is given and at most one matching row is changed. `checkColumns` must
    // still hold `checkValues` exactly (null matches null): a row another user changed since it
    // was read is then not found (0 rows) instead of being overwritten.
    // insertRow returns the value the engine gave `autoIncrementColumn`, or null.
    virtual QVariant insertRow(const QString& table, const QStringList& columns,
                               const QVariantList& values, const QString& autoIncrementColumn) = 0;
    virtual qint64 updateRow(const QString& table, const QStringList& columns,
                             const QVariantList& values, const QStringList& keyColumns,
                             const QVariantList& keyValues, const QStringList& checkColumns = {},
                             const QVariantList& checkValues = {}) = 0;
    virtual qint64 deleteRow(const QString& table, const QStringList& keyColumns,
                             const QVariantList& keyValues, const QStringList& checkColumns = {},
                             const QVariantList& checkValues = {}) = 0;

    // Bulk appending to `table`; by default one insertRow per row. The appender must not
    // outlive the driver.
    virtual std::unique_ptr<RowAppender> appendRows(const QString& table,
                                                    const QStringList& columns) {
        return std::make_unique<InsertingRowAppender>(*this, table, columns);
    }
};

using DriverFactory = std::function<std::unique_ptr<Driver>()>;

// Drivers are created by provider name ("SQLite", "PostgreSQL", ...), case-insensitive.
void registerDriver(const QString& provider, DriverFactory factory);
// Throws ProviderNotFound naming the supported providers.
std::unique_ptr<Driver> createDriver(const QString& provider);
QStringList registeredProviders();

} // namespace vx
