#include "data/recordset/RecordsetData.h"

#include "data/Error.h"
#include "data/recordset/SortKeys.h"

#include <QVarLengthArray>

namespace vx::detail {

void notify(RecordsetData& d, RecordsetChange::Kind kind, qsizetype position, qsizetype count) {
    if (d.listeners.empty())
        return;
    // By id, looked up again for each: a listener may subscribe or unsubscribe while told.
    QVarLengthArray<int, 8> ids;
    for (const auto& entry : d.listeners)
        ids.append(entry.first);
    const RecordsetChange change{kind, position, count};
    for (const int id : ids) {
        const auto found = d.listeners.find(id);
        if (found != d.listeners.end()) {
            const auto listener = found->second; // survives its own unsubscribe
            listener(change);
        }
    }
}

void rebuildOrder(RecordsetData& d) {
    std::vector<qsizetype> live;
    live.reserve(d.gone.size());
    for (qsizetype row = 0; row < qsizetype(d.gone.size()); ++row) {
        if (!d.gone[size_t(row)])
            live.push_back(row);
    }
    d.order.assign(sortRows(*d.rows, std::move(live), d.sortColumns));
}

void placeAtFirst(RecordsetData& d) {
    d.place = d.order.isEmpty() ? Place::BeforeFirst : Place::OnRow;
    d.position = d.order.isEmpty() ? -1 : 0;
}

int columnByName(const RecordsetData& d, const QString& name) {
    return d.fieldByName.value(name.toLower(), -1);
}

void load(RecordsetData& d, std::unique_ptr<RowStore> rows) {
    d.rows = std::move(rows);
    d.open = true;
    d.fieldByName.clear();
    const ColumnList& columns = d.rows->columns();
    // Backwards, so that of repeated names the first one answers.
    for (int i = int(columns.size()) - 1; i >= 0; --i)
        d.fieldByName.insert(columns[i].name.toLower(), i);
    const bool writable = !d.madeElsewhere && d.lock != LockType::ReadOnly;
    d.target = writable ? WriteTarget::forColumns(columns) : WriteTarget();
    d.gone.assign(size_t(d.rows->rowCount()), 0);
    d.changes.clear();
    d.rowBeforeAdd = -1;
    try {
        d.sortColumns =
            parseSortText(d.sortText, [&d](const QString& name) { return columnByName(d, name); });
    } catch (const Error&) {
        d.sortText.clear();
        d.sortColumns.clear();
    }
    rebuildOrder(d);
    placeAtFirst(d);
}

} // namespace vx::detail
