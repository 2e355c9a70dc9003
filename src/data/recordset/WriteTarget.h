#pragma once

#include "data/ColumnInfo.h"

#include <QVariantList>
#include <VXUILib/vxdata_export.h>
#include <vector>

namespace vx {

class Driver;
class RowStore;

// Where a record set's edits go: its one base table, the result columns that belong to it, and
// the columns that find a row there (the key, or every column when the table has none).
class WriteTarget {
public:
    // Not updatable when the columns come from no base table or from more than one (computed
    // columns do not count).
    static WriteTarget forColumns(const ColumnList& columns);

    bool isValid() const { return !m_table.isEmpty(); }
    const QString& table() const { return m_table; }
    bool writes(int column) const;
    bool isAutoIncrement(int column) const { return column == m_autoIncrement; }

    // Each returns what the driver reports; the row is read from `store`, the key from
    // `original` (the values as last read from or written to the table). Optimistic locking:
    // an update or delete also requires the changed columns to hold their original values, and
    // finding no such row throws RowNotFoundForUpdate rather than overwriting another user's
    // change.
    // Stores the engine's value for the auto-increment column; returns whether it did.
    bool insert(Driver& driver, RowStore& store, qsizetype row,
                const std::vector<bool>& assigned) const;
    qint64 update(Driver& driver, const RowStore& store, qsizetype row,
                  const QVariantList& original, const std::vector<bool>& changed) const;
    qint64 remove(Driver& driver, const QVariantList& original,
                  const std::vector<bool>& changed = {}) const;

private:
    QVariantList keyValues(const QVariantList& original) const;
    QStringList keyNames() const;
    // The changed columns that are not part of the key, with their original values.
    void checks(const QVariantList& original, const std::vector<bool>& changed, QStringList& names,
                QVariantList& values) const;

    QString m_table;
    ColumnList m_columns;
    std::vector<int> m_writable; // first result column of each base column
    std::vector<int> m_keys;
    int m_autoIncrement = -1;
};

// The value as the engine stores it: Yes/No as -1 and 0.
VXDATA_EXPORT QVariant storedValue(const QVariant& value, const ColumnInfo& column);

} // namespace vx
