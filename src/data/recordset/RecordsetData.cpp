#include "data/recordset/RecordsetData.h"

#include "data/Driver.h"
#include "data/Error.h"
#include "data/recordset/SortKeys.h"

#include <QVarLengthArray>
#include <algorithm>

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
    d.stream.reset();
    d.rowsPending = false; // a table-direct open sets it again
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

namespace {

constexpr qsizetype firstPiece = 64; // enough to tell an empty table, and the first screen
constexpr qsizetype largestPiece = 8192;

// Returns how many rows came.
qsizetype readPiece(RecordsetData& d) {
    if (!d.stream)
        return 0;
    const qsizetype before = d.rows->rowCount();
    const qsizetype fetched = d.stream->fetch(*d.rows, d.nextPiece);
    d.nextPiece = std::min(d.nextPiece * 2, largestPiece);
    if (fetched < 1) {
        d.stream.reset();
        return 0;
    }
    d.gone.resize(size_t(before + fetched), 0);
    for (qsizetype row = before; row < before + fetched; ++row)
        d.order.append(row);
    return fetched;
}

} // namespace

void startRows(RecordsetData& d) {
    if (!d.rowsPending)
        return;
    d.rowsPending = false;
    d.stream = d.connection.driver().streamTable(d.source);
    d.nextPiece = firstPiece;
    readPiece(d);
    if (!d.sortColumns.empty()) {
        readAllRows(d);
        rebuildOrder(d);
    }
    placeAtFirst(d);
}

void reachPosition(RecordsetData& d, qsizetype position) {
    startRows(d);
    while (d.stream && position >= d.order.size()) {
        if (readPiece(d) == 0)
            break;
    }
}

void readAllRows(RecordsetData& d) {
    startRows(d);
    while (readPiece(d) > 0) {
    }
}

} // namespace vx::detail
