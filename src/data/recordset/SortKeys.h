#pragma once

#include "data/recordset/SortText.h"

#include <QtGlobal>
#include <vector>

namespace vx {

class RowStore;

// Orders storage rows by the given columns on keys computed once per row: numbers and dates by
// value, text without regard to case (folded once, compared as UTF-8), nulls first when
// ascending and last when descending. Rows that compare equal keep ascending storage order, so
// the result is the same every time.
std::vector<qsizetype> sortRows(const RowStore& store, std::vector<qsizetype> rows,
                                const std::vector<SortColumn>& columns);

// Appends the case-folded UTF-8 of a text (ASCII folded in place, the rest through Unicode
// folding).
void appendFoldedUtf8(const char* utf8, qsizetype size, std::string& out);

} // namespace vx
