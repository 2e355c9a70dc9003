#pragma once

#include "data/Recordset.h"

#include <QVariantList>
#include <map>
#include <vector>

namespace vx {

class Driver;
class RowStore;
class WriteTarget;

// The edits of a record set: the row being edited now (with the values it had before, for
// cancelling) and, with batch locking, the rows changed since the last batch update, each with
// its pending operation and the values the table still holds. Edited values live in the row
// store itself, so reading never has to look here.
class ChangeTracker {
public:
    enum class Operation { Insert, Update, Delete };

    void clear();

    EditMode editMode() const { return m_mode; }
    bool isEditing() const { return m_mode != EditMode::None; }
    qsizetype editedRow() const { return m_row; }
    bool anyAssigned() const;
    bool hasPending() const { return !m_pending.empty(); }

    void beginAdd(qsizetype row, int columnCount);
    // Starts editing `row` unless it is being edited already.
    void beginEdit(const RowStore& store, qsizetype row);
    void assign(RowStore& store, int column, const QVariant& converted);

    // Optimistic locking writes the edit to the table now; batch locking files it as pending.
    // On failure the edit stays open and the error propagates. Returns whether the engine
    // filled in a value (an auto-increment key) on the row.
    bool commitEdit(RowStore& store, const WriteTarget& target, Driver* driver, bool batch);
    // Puts back the values the row had before the edit. Returns true when the row was added by
    // the edit and is therefore to be dropped.
    bool cancelEdit(RowStore& store);

    // Deletes a row that is not being edited: at once, or filed as pending.
    void deleteRow(const RowStore& store, const WriteTarget& target, Driver* driver, bool batch,
                   qsizetype row);

    // Sends the pending operations in the order they were first made. Each sent one is
    // forgotten; on failure the rest stay pending and failedRow() names the row that failed.
    // Returns rows whose values the engine changed.
    std::vector<qsizetype> sendPending(RowStore& store, const WriteTarget& target, Driver& driver);
    qsizetype failedRow() const { return m_failedRow; }
    struct Undone {
        std::vector<qsizetype> revived; // pending deletes, to show again
        std::vector<qsizetype> dropped; // pending inserts, to hide
    };
    // Forgets the pending operations and restores the values the table holds.
    Undone cancelPending(RowStore& store);

    // The value the table holds for the row (before any unsent change).
    QVariant originalValue(const RowStore& store, qsizetype row, int column) const;

private:
    struct Pending {
        Operation operation = Operation::Update;
        QVariantList original;
        std::vector<bool> changed;
        quint64 sequence = 0;
    };

    static QVariantList rowValues(const RowStore& store, qsizetype row);

    EditMode m_mode = EditMode::None;
    qsizetype m_row = -1;
    QVariantList m_before;
    std::vector<bool> m_assigned;
    std::map<qsizetype, Pending> m_pending;
    quint64 m_nextSequence = 0;
    qsizetype m_failedRow = -1;
};

} // namespace vx
