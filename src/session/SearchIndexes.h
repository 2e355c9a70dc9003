#pragma once

#include "data/Connection.h"
#include "data/FieldTypeCodes.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// Indexes on a group table's columns, so that a search by one of them, a pick list of its
// distinct values or a replace limited to a value reads the matching rows only, whatever the
// repository's size. Text columns are searched without regard to case, through LOWER(column).
struct SearchIndex {
    QString name;
    QString statement; // CREATE INDEX IF NOT EXISTS ...
};

struct IndexedColumn {
    QString name;
    DataType type = DataType::Empty;
    qint32 definedSize = 0;
};

// The indexes a group table's columns want: numbers and dates one each, short text one on
// the value and one on its lower case; Yes/No, long text, memo and the key column none.
VXUILIB_EXPORT QList<SearchIndex> searchIndexesFor(const QString& groupTable,
                                                   const QList<IndexedColumn>& columns);

// Creates those of the tables' indexes the repository lacks, then has the engine sample the
// tables that got one. Returns the names created. Throws vx::Error.
VXUILIB_EXPORT QStringList ensureSearchIndexes(Connection& connection,
                                               const QStringList& groupTables);
// The same for every group listed in the repository.
VXUILIB_EXPORT QStringList ensureSearchIndexes(Connection& connection);

// Once per repository and process, for repositories made before these indexes existed. A
// failure (a read-only file, a user without the right) is logged, never shown: searching still
// works, only slower.
void ensureSearchIndexesOnce(Connection& connection, const QString& connectionText);

} // namespace vx
