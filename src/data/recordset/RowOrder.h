#pragma once

#include <QtGlobal>
#include <vector>

namespace vx {

// The record set's current order: storage rows by position, with the reverse look-up (storage
// row to position) rebuilt only when asked after a change that shifts positions.
class RowOrder {
public:
    void assign(std::vector<qsizetype> rows);
    void clear();

    qsizetype size() const { return qsizetype(m_rows.size()); }
    bool isEmpty() const { return m_rows.empty(); }
    qsizetype rowAt(qsizetype position) const { return m_rows[size_t(position)]; }
    const std::vector<qsizetype>& rows() const { return m_rows; }
    // -1 when the row is not in the order.
    qsizetype positionOf(qsizetype row) const;

    void append(qsizetype row);
    void removeAt(qsizetype position);

private:
    std::vector<qsizetype> m_rows;
    mutable std::vector<qsizetype> m_positions;
    mutable bool m_positionsValid = false;
};

} // namespace vx
