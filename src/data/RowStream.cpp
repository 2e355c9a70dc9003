#include "data/RowStream.h"

#include <algorithm>

namespace vx {

MaterialisedRowStream::MaterialisedRowStream(std::unique_ptr<RowStore> rows)
    : m_rows(std::move(rows)) {}

qsizetype MaterialisedRowStream::fetch(RowStore& into, qsizetype maxRows) {
    const qsizetype count = std::min(maxRows, m_rows->rowCount() - m_next);
    const int columns = m_rows->columnCount();
    for (qsizetype i = 0; i < count; ++i, ++m_next) {
        const qsizetype row = into.appendEmptyRow();
        for (int column = 0; column < columns; ++column)
            into.setValue(row, column, m_rows->value(m_next, column));
    }
    return std::max<qsizetype>(count, 0);
}

std::unique_ptr<RowStore> emptyLike(const RowStore& rows) {
    return std::make_unique<RowStore>(rows.columns());
}

} // namespace vx
