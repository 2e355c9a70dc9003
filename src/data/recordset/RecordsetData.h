#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"
#include "data/ResultStream.h"
#include "data/RowStore.h"
#include "data/recordset/ChangeTracker.h"
#include "data/recordset/RowOrder.h"
#include "data/recordset/SortText.h"
#include "data/recordset/WriteTarget.h"

#include <QHash>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace vx::detail {

// Where the cursor stands. OnDeleted: on a row just deleted; `position` is then where the next
// row now stands, and the flags stay false until the next move, as the platform has it.
enum class Place { BeforeFirst, OnRow, AfterLast, OnDeleted };

// The state every copy of one record set shares.
struct RecordsetData {
    bool open = false;
    std::unique_ptr<RowStore> rows;
    QString source;
    Connection connection;
    bool madeElsewhere = false; // fromRows: no source to run again, never written back
    CursorType cursorType = CursorType::ForwardOnly;
    LockType lock = LockType::ReadOnly;
    CommandType command = CommandType::Text;

    QHash<QString, int> fieldByName; // lower-case name -> first column of that name
    WriteTarget target;
    std::vector<unsigned char> gone; // by storage row: deleted, or an add that was cancelled
    RowOrder order;
    QString sortText;
    std::vector<SortColumn> sortColumns;

    Place place = Place::BeforeFirst;
    qsizetype position = -1;
    qsizetype rowBeforeAdd = -1;
    ChangeTracker changes;

    // Forward-only table-direct opens know only the table's columns at first. The rows are read
    // when the record set is first read, a piece at a time as the cursor moves on; a record set
    // that is only added to never reads them.
    bool rowsPending = false;
    std::unique_ptr<ResultStream> stream;
    qsizetype nextPiece = 0;

    std::map<int, std::function<void(const RecordsetChange&)>> listeners;
    int nextListener = 1;

    bool batch() const { return lock == LockType::BatchOptimistic; }
};

// Tells every subscriber, in the order they subscribed.
void notify(RecordsetData& d, RecordsetChange::Kind kind, qsizetype position, qsizetype count = 1);
// The live rows (not deleted) in the current sort, or in storage order without one.
void rebuildOrder(RecordsetData& d);
void placeAtFirst(RecordsetData& d);
int columnByName(const RecordsetData& d, const QString& name);
// Takes over freshly materialised rows; keeps the sort when its columns are still there.
void load(RecordsetData& d, std::unique_ptr<RowStore> rows);

// Starts reading the table's rows if a table-direct open left them pending; the cursor then
// stands on the first row.
void startRows(RecordsetData& d);
// Reads on until `position` is a row of the order, or the rows are exhausted.
void reachPosition(RecordsetData& d, qsizetype position);
// Reads every row still to come.
void readAllRows(RecordsetData& d);

} // namespace vx::detail
