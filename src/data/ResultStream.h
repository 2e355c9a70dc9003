#pragma once

#include "data/RowStore.h"
#include "data/recordset/SortText.h"

#include <memory>
#include <vector>

namespace vx {

// A query's (or a table's) rows read a piece at a time, in the order the engine returns them,
// so that a reader moving forward never waits for (or holds) the whole result: the first rows
// go on screen while the rest are still coming. The columns are known before any row is read.
// A stream belongs to one connection and is used by one thread at a time; it may be handed to
// another thread between reads.
class ResultStream {
public:
    virtual ~ResultStream() = default;

    // The result's columns, before any row is read.
    virtual const ColumnList& columns() const = 0;
    // Asks the engine for the rows in this order, compared as the record set's own sort
    // compares them (nulls first ascending, last descending), ties keeping the query's own
    // order. Only before the first read. False when the engine cannot order them the same way
    // (text compared by another collation, a column whose type shows only in its values, a
    // query whose shape leaves no room for the order): the rows then come as the query gives
    // them.
    virtual bool orderBy(const std::vector<SortColumn>& columns);
    // Appends up to `maxRows` further rows to `into`, whose columns are the stream's; returns
    // how many, 0 at the end. Throws vx::Error when the engine fails part-way.
    virtual qsizetype fetch(RowStore& into, qsizetype maxRows) = 0;
    // Up to `maxRows` further rows in a store of their own; no rows at the end.
    virtual std::unique_ptr<RowStore> read(qsizetype maxRows);
    virtual bool atEnd() const = 0;
};

// An empty store with the columns of `rows`.
std::unique_ptr<RowStore> emptyLike(const RowStore& rows);

} // namespace vx
