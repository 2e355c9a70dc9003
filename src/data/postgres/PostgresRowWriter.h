#pragma once

#include <QStringList>
#include <QVariantList>

namespace vx::postgres {

class Catalog;
class Session;

// Writes one row of a record set back to its base table with a parameterised statement.
// Names are found in the catalog in any letter case. A row is found by its key; a table
// without one (or a write not keyed by it) changes at most the first row with all the original
// values, found by its physical position (ctid). Check columns must still hold the values given
// (compared exactly, null matching null), so that a row changed since it was read is not found.
class RowWriter {
public:
    RowWriter(Session& session, Catalog& catalog);

    QVariant insert(const QString& table, const QStringList& columns, const QVariantList& values,
                    const QString& autoIncrementColumn);
    qint64 update(const QString& table, const QStringList& columns, const QVariantList& values,
                  const QStringList& keyColumns, const QVariantList& keyValues,
                  const QStringList& checkColumns, const QVariantList& checkValues);
    qint64 remove(const QString& table, const QStringList& keyColumns,
                  const QVariantList& keyValues, const QStringList& checkColumns,
                  const QVariantList& checkValues);

private:
    Session& m_session;
    Catalog& m_catalog;
};

} // namespace vx::postgres
