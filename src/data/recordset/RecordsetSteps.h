#pragma once

#include "data/recordset/RecordsetData.h"

namespace vx::detail {

// The checks and cursor steps the record set's operations are made of.

void requireOpen(const RecordsetData& d);
// Open, and `column` one of its columns.
void requireColumn(const RecordsetData& d, int column);
void requireUpdatable(const RecordsetData& d);
// The storage index of the current row; throws when there is none.
qsizetype currentRow(const RecordsetData& d);
// The current position, -1 when the cursor is not on a row.
qsizetype currentPosition(const RecordsetData& d);
// The driver edits are written through at once; none while changes are batched.
Driver* driverForWrites(const RecordsetData& d);

// Drops the row added by the edit in progress. An explicit cancel returns to the row that was
// current before the add; otherwise the cursor stays where the row was, like a deleted row.
void dropAddedRow(RecordsetData& d, bool returnToPrevious);
void commitEdit(RecordsetData& d);
// Leaving a row ends its edit as the platform does: the edit is saved. A row just added and
// never filled in is dropped instead of being saved empty.
void finishEditBeforeMove(RecordsetData& d);

struct Target {
    Place place = Place::BeforeFirst;
    qsizetype row = -1;
};
Target targetAt(const RecordsetData& d, qsizetype position);
// Moves the cursor, ending an edit of another row first.
void goTo(RecordsetData& d, Target target);
// No rows and not on a deleted one: BOF and EOF at once.
bool bothEnds(const RecordsetData& d);

} // namespace vx::detail
