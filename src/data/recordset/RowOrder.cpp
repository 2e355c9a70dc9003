#include "data/recordset/RowOrder.h"

#include <algorithm>

namespace vx {

void RowOrder::assign(std::vector<qsizetype> rows) {
    m_rows = std::move(rows);
    m_positionsValid = false;
    m_positions.clear();
}

void RowOrder::clear() {
    assign({});
}

qsizetype RowOrder::positionOf(qsizetype row) const {
    if (!m_positionsValid) {
        qsizetype highest = -1;
        for (const qsizetype r : m_rows)
            highest = std::max(highest, r);
        m_positions.assign(size_t(highest + 1), -1);
        for (size_t position = 0; position < m_rows.size(); ++position)
            m_positions[size_t(m_rows[position])] = qsizetype(position);
        m_positionsValid = true;
    }
    if (row < 0 || row >= qsizetype(m_positions.size()))
        return -1;
    return m_positions[size_t(row)];
}

void RowOrder::append(qsizetype row) {
    m_rows.push_back(row);
    if (m_positionsValid) {
        if (row >= qsizetype(m_positions.size()))
            m_positions.resize(size_t(row + 1), -1);
        m_positions[size_t(row)] = size() - 1;
    }
}

void RowOrder::removeAt(qsizetype position) {
    const qsizetype row = m_rows[size_t(position)];
    m_rows.erase(m_rows.begin() + position);
    if (!m_positionsValid)
        return;
    if (position == size()) {
        // The last row: nothing else moved.
        m_positions[size_t(row)] = -1;
    } else {
        m_positionsValid = false;
    }
}

} // namespace vx
