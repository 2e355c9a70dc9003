#pragma once

#include "data/ResultStream.h"

namespace vx {

// A stream over rows already materialised, for engines (or results) that cannot hand them out
// in pieces.
class MaterialisedResultStream : public ResultStream {
public:
    explicit MaterialisedResultStream(std::unique_ptr<RowStore> rows);

    const ColumnList& columns() const override { return m_columns; }
    qsizetype fetch(RowStore& into, qsizetype maxRows) override;
    // Hands the whole store over when nothing was read yet and it all fits.
    std::unique_ptr<RowStore> read(qsizetype maxRows) override;
    bool atEnd() const override;

private:
    std::unique_ptr<RowStore> m_rows;
    ColumnList m_columns;
    qsizetype m_next = 0;
};

} // namespace vx
