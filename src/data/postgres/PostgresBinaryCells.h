#pragma once

#include "data/RowStore.h"
#include "data/postgres/PostgresHandles.h"

#include <span>

namespace vx::postgres {

// Cells in the server's binary format, read into the store as their text would be: the same
// integers, the same doubles (a real or numeric decodes to the double its text parses to), the
// same wall-clock seconds, the same bytes. What the store has no place for (infinite dates,
// dates outside years 1 to 9999) reads as null, as its text does.
//
// Whether every column of a result can be read this way; a result holding any other type
// (time zones, uuids, intervals, arrays, ...) is read as text.
bool readsBinary(std::span<const Oid> types);

// Appends one cell of the server type `type` (one that readsBinary accepts).
void appendBinaryCell(RowStore& rows, Oid type, const char* data, int size);

} // namespace vx::postgres
