#include "data/recordset/ChangeTracker.h"

#include "data/RowStore.h"
#include "data/recordset/WriteTarget.h"

#include <algorithm>

namespace vx {

void ChangeTracker::clear() {
    m_mode = EditMode::None;
    m_row = -1;
    m_before.clear();
    m_assigned.clear();
    m_pending.clear();
}

bool ChangeTracker::anyAssigned() const {
    return std::find(m_assigned.begin(), m_assigned.end(), true) != m_assigned.end();
}

QVariantList ChangeTracker::rowValues(const RowStore& store, qsizetype row) {
    QVariantList values;
    values.reserve(store.columnCount());
    for (int column = 0; column < store.columnCount(); ++column)
        values << store.value(row, column);
    return values;
}

void ChangeTracker::beginAdd(qsizetype row, int columnCount) {
    m_mode = EditMode::Add;
    m_row = row;
    m_before = QVariantList(columnCount);
    m_assigned.assign(size_t(columnCount), false);
}

void ChangeTracker::beginEdit(const RowStore& store, qsizetype row) {
    if (isEditing() && m_row == row)
        return;
    m_mode = EditMode::InProgress;
    m_row = row;
    m_before = rowValues(store, row);
    m_assigned.assign(size_t(store.columnCount()), false);
}

void ChangeTracker::assign(RowStore& store, int column, const QVariant& converted) {
    store.setValue(m_row, column, converted);
    m_assigned[size_t(column)] = true;
}

bool ChangeTracker::commitEdit(RowStore& store, const WriteTarget& target, Driver* driver,
                               bool batch) {
    if (!isEditing())
        return false;
    bool engineFilled = false;
    if (batch) {
        auto found = m_pending.find(m_row);
        if (found == m_pending.end()) {
            Pending pending;
            pending.operation = m_mode == EditMode::Add ? Operation::Insert : Operation::Update;
            pending.original = m_mode == EditMode::Add ? QVariantList() : m_before;
            pending.changed = m_assigned;
            pending.sequence = m_nextSequence++;
            m_pending.emplace(m_row, std::move(pending));
        } else {
            for (size_t i = 0; i < m_assigned.size(); ++i)
                found->second.changed[i] = found->second.changed[i] || m_assigned[i];
        }
    } else if (m_mode == EditMode::Add) {
        engineFilled = target.insert(*driver, store, m_row, m_assigned);
    } else {
        target.update(*driver, store, m_row, m_before, m_assigned);
    }
    m_mode = EditMode::None;
    m_row = -1;
    m_before.clear();
    m_assigned.clear();
    return engineFilled;
}

bool ChangeTracker::cancelEdit(RowStore& store) {
    if (!isEditing())
        return false;
    const bool added = m_mode == EditMode::Add;
    for (int column = 0; column < m_before.size(); ++column) {
        if (m_assigned[size_t(column)])
            store.setValue(m_row, column, m_before[column]);
    }
    m_mode = EditMode::None;
    m_row = -1;
    m_before.clear();
    m_assigned.clear();
    return added;
}

void ChangeTracker::deleteRow(const RowStore& store, const WriteTarget& target, Driver* driver,
                              bool batch, qsizetype row) {
    auto found = m_pending.find(row);
    if (!batch) {
        target.remove(*driver, rowValues(store, row));
        return;
    }
    if (found == m_pending.end()) {
        Pending pending;
        pending.operation = Operation::Delete;
        pending.original = rowValues(store, row);
        pending.sequence = m_nextSequence++;
        m_pending.emplace(row, std::move(pending));
    } else if (found->second.operation == Operation::Insert) {
        m_pending.erase(found); // never reached the table
    } else {
        found->second.operation = Operation::Delete;
    }
}

std::vector<qsizetype> ChangeTracker::sendPending(RowStore& store, const WriteTarget& target,
                                                  Driver& driver) {
    std::vector<std::pair<quint64, qsizetype>> order;
    for (const auto& [row, pending] : m_pending)
        order.emplace_back(pending.sequence, row);
    std::sort(order.begin(), order.end());

    std::vector<qsizetype> filled;
    m_failedRow = -1;
    for (const auto& [sequence, row] : order) {
        const Pending& pending = m_pending.at(row);
        try {
            switch (pending.operation) {
            case Operation::Insert:
                if (target.insert(driver, store, row, pending.changed))
                    filled.push_back(row);
                break;
            case Operation::Update:
                target.update(driver, store, row, pending.original, pending.changed);
                break;
            case Operation::Delete:
                target.remove(driver, pending.original, pending.changed);
                break;
            }
        } catch (...) {
            m_failedRow = row;
            throw;
        }
        m_pending.erase(row);
    }
    return filled;
}

ChangeTracker::Undone ChangeTracker::cancelPending(RowStore& store) {
    Undone undone;
    for (const auto& [row, pending] : m_pending) {
        switch (pending.operation) {
        case Operation::Insert:
            undone.dropped.push_back(row);
            break;
        case Operation::Delete:
            undone.revived.push_back(row);
            [[fallthrough]];
        case Operation::Update:
            for (int column = 0; column < pending.original.size(); ++column)
                store.setValue(row, column, pending.original[column]);
            break;
        }
    }
    m_pending.clear();
    return undone;
}

QVariant ChangeTracker::originalValue(const RowStore& store, qsizetype row, int column) const {
    const auto found = m_pending.find(row);
    if (found != m_pending.end())
        return found->second.original.value(column);
    if (isEditing() && m_row == row)
        return m_before.value(column);
    return store.value(row, column);
}

} // namespace vx
