#include "data/recordset/RecordsetSteps.h"

#include "data/Driver.h"
#include "data/recordset/RecordsetErrors.h"

namespace vx::detail {

void requireOpen(const RecordsetData& d) {
    if (!d.open)
        throw errors::objectClosed();
}

void requireColumn(const RecordsetData& d, int column) {
    requireOpen(d);
    if (column < 0 || column >= d.rows->columnCount())
        throw errors::itemNotFound();
}

void requireUpdatable(const RecordsetData& d) {
    if (!d.target.isValid())
        throw errors::notUpdatable();
}

qsizetype currentRow(const RecordsetData& d) {
    requireOpen(d);
    if (d.place != Place::OnRow)
        throw errors::noCurrentRecord();
    return d.order.rowAt(d.position);
}

qsizetype currentPosition(const RecordsetData& d) {
    return d.place == Place::OnRow ? d.position : -1;
}

Driver* driverForWrites(const RecordsetData& d) {
    return d.batch() ? nullptr : &d.connection.driver();
}

void dropAddedRow(RecordsetData& d, bool returnToPrevious) {
    const qsizetype row = d.changes.editedRow();
    const qsizetype removedAt = d.order.positionOf(row);
    notify(d, RecordsetChange::RowAboutToBeRemoved, removedAt);
    d.changes.cancelEdit(*d.rows);
    d.gone[size_t(row)] = 1;
    d.order.removeAt(removedAt);
    d.place = Place::OnDeleted;
    d.position = removedAt;
    if (returnToPrevious) {
        const qsizetype previous = d.rowBeforeAdd >= 0 && !d.gone[size_t(d.rowBeforeAdd)]
                                       ? d.order.positionOf(d.rowBeforeAdd)
                                       : -1;
        if (previous >= 0) {
            d.place = Place::OnRow;
            d.position = previous;
        } else if (d.order.isEmpty()) {
            d.place = Place::BeforeFirst;
            d.position = -1;
        }
    }
    notify(d, RecordsetChange::RowRemoved, removedAt);
    if (returnToPrevious)
        notify(d, RecordsetChange::CurrentMoved, currentPosition(d));
}

void commitEdit(RecordsetData& d) {
    if (!d.changes.isEditing())
        return;
    const qsizetype row = d.changes.editedRow();
    const bool engineFilled =
        d.changes.commitEdit(*d.rows, d.target, driverForWrites(d), d.batch());
    if (engineFilled)
        notify(d, RecordsetChange::RowChanged, d.order.positionOf(row));
}

void finishEditBeforeMove(RecordsetData& d) {
    if (!d.changes.isEditing())
        return;
    if (d.changes.editMode() == EditMode::Add && !d.changes.anyAssigned())
        dropAddedRow(d, false);
    else
        commitEdit(d);
}

Target targetAt(const RecordsetData& d, qsizetype position) {
    if (position < 0)
        return {Place::BeforeFirst, -1};
    if (position >= d.order.size())
        return {Place::AfterLast, -1};
    return {Place::OnRow, d.order.rowAt(position)};
}

void goTo(RecordsetData& d, Target target) {
    if (d.changes.isEditing() &&
        !(target.place == Place::OnRow && target.row == d.changes.editedRow()))
        finishEditBeforeMove(d);
    d.place = target.place;
    switch (target.place) {
    case Place::OnRow:
        d.position = d.order.positionOf(target.row);
        if (d.position < 0) {
            d.place = Place::AfterLast;
            d.position = d.order.size();
        }
        break;
    case Place::AfterLast:
        d.position = d.order.size();
        break;
    default:
        d.position = -1;
        break;
    }
    notify(d, RecordsetChange::CurrentMoved, currentPosition(d));
}

bool bothEnds(const RecordsetData& d) {
    return d.order.isEmpty() && d.place != Place::OnDeleted;
}

} // namespace vx::detail
