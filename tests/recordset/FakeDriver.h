#pragma once

#include "data/Connection.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/RowStore.h"
#include "data/recordset/RecordsetErrors.h"
#include "support/ErrorNumberOf.h"

#include <QHash>
#include <QVariantList>
#include <functional>
#include <optional>

namespace vx::test {

// What reached the driver through a write-back call.
struct WriteCall {
    enum Kind { Insert, Update, Delete } kind = Insert;
    QString table;
    QStringList columns;
    QVariantList values;
    QStringList keyColumns;
    QVariantList keyValues;
    QString autoIncrementColumn;
    QStringList checkColumns; // must still hold checkValues
    QVariantList checkValues;
};

// An engine without an engine: selects answer with stores the test prepared, writes are
// recorded. Registered as provider "Fake".
class FakeDriver : public Driver {
public:
    using StoreMaker = std::function<std::unique_ptr<RowStore>()>;

    // Makes "Provider=Fake" available; returns an open connection to a fresh fake.
    static Connection connect();
    static FakeDriver& of(const Connection& connection);

    void setResult(const QString& source, StoreMaker maker) { m_results.insert(source, maker); }
    QList<WriteCall> calls;
    int selects = 0;
    qint64 nextAutoIncrement = 100;
    qint64 affectedRows = 1;            // what updateRow / deleteRow report
    std::optional<Error> failNextWrite; // thrown by the next write, once

    QString name() const override { return QStringLiteral("Fake"); }
    void open(const ConnectionProperties&, const QString&, const QString&) override {
        m_open = true;
    }
    void close() override { m_open = false; }
    bool isOpen() const override { return m_open; }
    qint64 execute(const QString&) override { return -1; }
    std::unique_ptr<RowStore> select(const QString& sql) override;
    std::unique_ptr<RowStore> selectTable(const QString& table) override { return select(table); }
    // The columns alone, as an engine reads them from its catalogue: not counted in `selects`.
    std::unique_ptr<RowStore> tableStructure(const QString& table) override {
        ++structureReads;
        return emptyLike(*m_results.value(table)());
    }
    int structureReads = 0;
    void beginTransaction() override {}
    void commitTransaction() override {}
    void rollbackTransaction() override {}
    int transactionLevel() const override { return 0; }
    QList<TableEntry> tables() override { return {}; }
    QList<ProviderTypeEntry> providerTypes() override { return {}; }
    QVariant insertRow(const QString& table, const QStringList& columns, const QVariantList& values,
                       const QString& autoIncrementColumn) override;
    qint64 updateRow(const QString& table, const QStringList& columns, const QVariantList& values,
                     const QStringList& keyColumns, const QVariantList& keyValues,
                     const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;
    qint64 deleteRow(const QString& table, const QStringList& keyColumns,
                     const QVariantList& keyValues, const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;

private:
    void maybeFail();

    bool m_open = false;
    QHash<QString, StoreMaker> m_results;
};

// A column of base table `table` (empty: computed).
ColumnInfo column(const QString& name, DataType type, const QString& table = QStringLiteral("t"),
                  bool key = false, qint32 size = 0);
// A store with the given columns and rows; values go in as the column holds them.
std::unique_ptr<RowStore> makeStore(const ColumnList& columns, const QList<QVariantList>& rows);

// The number of the vx::Error that `action` raised, 0 for none.
inline qint32 errorOf(const std::function<void()>& action) {
    return errorNumberOf(action);
}

// The text of the vx::Error that `action` raised, empty for none.
inline QString errorTextOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.description();
    }
    return {};
}

} // namespace vx::test
