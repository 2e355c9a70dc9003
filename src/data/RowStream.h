#pragma once

#include "data/RowStore.h"

#include <memory>

namespace vx {

// The rows of a query handed over a piece at a time, in the order the engine returns them, so
// that a reader moving forward never waits for (or holds) the whole table.
class RowStream {
public:
    virtual ~RowStream() = default;
    // Appends at most `maxRows` rows to `into`, whose columns are the stream's; returns how many
    // were appended, 0 once the rows are exhausted.
    virtual qsizetype fetch(RowStore& into, qsizetype maxRows) = 0;
};

// A stream over rows already materialised, for engines that cannot hand them out in pieces.
class MaterialisedRowStream : public RowStream {
public:
    explicit MaterialisedRowStream(std::unique_ptr<RowStore> rows);
    qsizetype fetch(RowStore& into, qsizetype maxRows) override;

private:
    std::unique_ptr<RowStore> m_rows;
    qsizetype m_next = 0;
};

// An empty store with the columns of `rows`.
std::unique_ptr<RowStore> emptyLike(const RowStore& rows);

} // namespace vx
