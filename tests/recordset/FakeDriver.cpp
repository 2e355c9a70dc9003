#include "FakeDriver.h"

#include "data/Field.h"

namespace vx::test {

Connection FakeDriver::connect() {
    static const bool registered = [] {
        registerDriver("Fake", [] { return std::make_unique<FakeDriver>(); });
        return true;
    }();
    Q_UNUSED(registered);
    Connection connection;
    connection.open("Provider=Fake;Data Source=nowhere");
    return connection;
}

FakeDriver& FakeDriver::of(const Connection& connection) {
    return dynamic_cast<FakeDriver&>(connection.driver());
}

std::unique_ptr<RowStore> FakeDriver::select(const QString& sql) {
    ++selects;
    const auto found = m_results.constFind(sql);
    if (found == m_results.constEnd())
        throw Error(ErrorNumber::TableNotFound, "no such source: " + sql);
    return (*found)();
}

void FakeDriver::maybeFail() {
    if (failNextWrite) {
        const Error error = *failNextWrite;
        failNextWrite.reset();
        throw error;
    }
}

QVariant FakeDriver::insertRow(const QString& table, const QStringList& columns,
                               const QVariantList& values, const QString& autoIncrementColumn) {
    maybeFail();
    calls.append({WriteCall::Insert, table, columns, values, {}, {}, autoIncrementColumn, {}, {}});
    if (autoIncrementColumn.isEmpty())
        return {};
    return QVariant(nextAutoIncrement++);
}

qint64 FakeDriver::updateRow(const QString& table, const QStringList& columns,
                             const QVariantList& values, const QStringList& keyColumns,
                             const QVariantList& keyValues, const QStringList& checkColumns,
                             const QVariantList& checkValues) {
    maybeFail();
    calls.append({WriteCall::Update,
                  table,
                  columns,
                  values,
                  keyColumns,
                  keyValues,
                  {},
                  checkColumns,
                  checkValues});
    return affectedRows;
}

qint64 FakeDriver::deleteRow(const QString& table, const QStringList& keyColumns,
                             const QVariantList& keyValues, const QStringList& checkColumns,
                             const QVariantList& checkValues) {
    maybeFail();
    calls.append(
        {WriteCall::Delete, table, {}, {}, keyColumns, keyValues, {}, checkColumns, checkValues});
    return affectedRows;
}

ColumnInfo column(const QString& name, DataType type, const QString& table, bool key, qint32 size) {
    ColumnInfo info;
    info.name = name;
    info.type = type;
    info.definedSize = size;
    info.baseTable = table;
    info.baseColumn = table.isEmpty() ? QString() : name;
    info.keyColumn = key;
    return info;
}

std::unique_ptr<RowStore> makeStore(const ColumnList& columns, const QList<QVariantList>& rows) {
    auto store = std::make_unique<RowStore>(columns);
    for (const QVariantList& values : rows) {
        const qsizetype row = store->appendEmptyRow();
        for (int c = 0; c < values.size(); ++c)
            store->setValue(row, c, convertForColumn(values[c], columns[c]));
    }
    return store;
}

} // namespace vx::test
