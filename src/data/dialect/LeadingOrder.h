#pragma once

#include "data/recordset/SortText.h"

#include <QString>
#include <vector>

namespace vx::dialect {

// ORDER BY terms naming result columns by their 1-based place ("3 DESC NULLS LAST, 1 ASC NULLS
// FIRST"): nulls before every value ascending and after them descending, as the record set
// sorts. Places rather than names: result names may repeat, and both engines read places the
// same way, also over a query wrapped as a derived table.
QString orderTerms(const std::vector<SortColumn>& columns);

// The query with `terms` ordering its rows ahead of its own ORDER BY, whose terms then only
// break ties (so the rows come as a stable sort of the query's own order would leave them).
// Empty when the query's outermost level combines or cuts its rows (UNION, INTERSECT, EXCEPT,
// LIMIT, OFFSET, FETCH, FOR, INTO): an order added there would mean something else.
QString withLeadingOrder(const QString& sql, const QString& terms);

} // namespace vx::dialect
