#include "data/MaterialisedResultStream.h"

#include <algorithm>
#include <utility>

namespace vx {

MaterialisedResultStream::MaterialisedResultStream(std::unique_ptr<RowStore> rows)
    : m_rows(std::move(rows))
    , m_columns(m_rows->columns()) {}

qsizetype MaterialisedResultStream::fetch(RowStore& into, qsizetype maxRows) {
    if (!m_rows)
        return 0;
    const qsizetype count = std::max<qsizetype>(0, std::min(maxRows, m_rows->rowCount() - m_next));
    const int columns = m_rows->columnCount();
    for (qsizetype i = 0; i < count; ++i, ++m_next) {
        const qsizetype row = into.appendEmptyRow();
        for (int column = 0; column < columns; ++column)
            into.setValue(row, column, m_rows->value(m_next, column));
    }
    return count;
}

std::unique_ptr<RowStore> MaterialisedResultStream::read(qsizetype maxRows) {
    if (m_rows && m_next == 0 && maxRows >= m_rows->rowCount()) {
        m_next = m_rows->rowCount();
        return std::exchange(m_rows, nullptr);
    }
    return ResultStream::read(maxRows);
}

bool MaterialisedResultStream::atEnd() const {
    return !m_rows || m_next >= m_rows->rowCount();
}

} // namespace vx
