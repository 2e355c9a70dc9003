#include "data/recordset/WriteTarget.h"

#include "data/Driver.h"
#include "data/RowStore.h"
#include "data/recordset/RecordsetErrors.h"

#include <QSet>
#include <algorithm>

namespace vx {

WriteTarget WriteTarget::forColumns(const ColumnList& columns) {
    WriteTarget target;
    QString table;
    for (const ColumnInfo& column : columns) {
        if (column.baseTable.isEmpty() || column.baseColumn.isEmpty())
            continue;
        if (table.isEmpty())
            table = column.baseTable;
        else if (table.compare(column.baseTable, Qt::CaseInsensitive) != 0)
            return {};
    }
    if (table.isEmpty())
        return {};

    target.m_table = table;
    target.m_columns = columns;
    QSet<QString> seen;
    for (int i = 0; i < columns.size(); ++i) {
        const ColumnInfo& column = columns[i];
        if (column.baseColumn.isEmpty() || column.baseTable.isEmpty())
            continue;
        // A column selected twice is written once.
        const QString name = column.baseColumn.toLower();
        if (seen.contains(name))
            continue;
        seen.insert(name);
        target.m_writable.push_back(i);
        if (column.keyColumn)
            target.m_keys.push_back(i);
        if (column.autoIncrement && target.m_autoIncrement < 0)
            target.m_autoIncrement = i;
    }
    if (target.m_keys.empty())
        target.m_keys = target.m_writable;
    return target;
}

bool WriteTarget::writes(int column) const {
    return std::find(m_writable.begin(), m_writable.end(), column) != m_writable.end();
}

QStringList WriteTarget::keyNames() const {
    QStringList names;
    for (const int column : m_keys)
        names << m_columns[column].baseColumn;
    return names;
}

QVariantList WriteTarget::keyValues(const QVariantList& original) const {
    QVariantList values;
    for (const int column : m_keys)
        values << storedValue(original.value(column), m_columns[column]);
    return values;
}

void WriteTarget::checks(const QVariantList& original, const std::vector<bool>& changed,
                         QStringList& names, QVariantList& values) const {
    for (const int column : m_writable) {
        if (size_t(column) >= changed.size() || !changed[size_t(column)] ||
            std::find(m_keys.begin(), m_keys.end(), column) != m_keys.end())
            continue;
        names << m_columns[column].baseColumn;
        values << storedValue(original.value(column), m_columns[column]);
    }
}

bool WriteTarget::insert(Driver& driver, RowStore& store, qsizetype row,
                         const std::vector<bool>& assigned) const {
    QStringList names;
    QVariantList values;
    for (const int column : m_writable) {
        if (!assigned[size_t(column)])
            continue;
        names << m_columns[column].baseColumn;
        values << storedValue(store.value(row, column), m_columns[column]);
    }
    const bool engineFills = m_autoIncrement >= 0 && !assigned[size_t(m_autoIncrement)];
    const QString autoColumn = engineFills ? m_columns[m_autoIncrement].baseColumn : QString();
    const QVariant generated = driver.insertRow(m_table, names, values, autoColumn);
    if (!engineFills || !generated.isValid())
        return false;
    store.setValue(row, m_autoIncrement, generated);
    return true;
}

qint64 WriteTarget::update(Driver& driver, const RowStore& store, qsizetype row,
                           const QVariantList& original, const std::vector<bool>& changed) const {
    QStringList names;
    QVariantList values;
    for (const int column : m_writable) {
        if (!changed[size_t(column)])
            continue;
        names << m_columns[column].baseColumn;
        values << storedValue(store.value(row, column), m_columns[column]);
    }
    if (names.isEmpty())
        return 1; // nothing to send
    QStringList checkNames;
    QVariantList checkValues;
    checks(original, changed, checkNames, checkValues);
    const qint64 affected = driver.updateRow(m_table, names, values, keyNames(),
                                             keyValues(original), checkNames, checkValues);
    if (affected == 0)
        throw errors::rowNotFoundForUpdate();
    return affected;
}

qint64 WriteTarget::remove(Driver& driver, const QVariantList& original,
                           const std::vector<bool>& changed) const {
    QStringList checkNames;
    QVariantList checkValues;
    checks(original, changed, checkNames, checkValues);
    const qint64 affected =
        driver.deleteRow(m_table, keyNames(), keyValues(original), checkNames, checkValues);
    if (affected == 0)
        throw errors::rowNotFoundForUpdate();
    return affected;
}

QVariant storedValue(const QVariant& value, const ColumnInfo& column) {
    if (value.isValid() && column.type == DataType::Boolean)
        return QVariant(qint64(value.toBool() ? -1 : 0));
    return value;
}

} // namespace vx
