#include "data/Recordset.h"

#include "data/Driver.h"
#include "data/recordset/RecordsetData.h"
#include "data/recordset/RecordsetErrors.h"
#include "data/recordset/RecordsetSteps.h"
#include "data/recordset/ValueFinder.h"

namespace vx {

using detail::bothEnds;
using detail::columnByName;
using detail::commitEdit;
using detail::currentPosition;
using detail::currentRow;
using detail::driverForWrites;
using detail::dropAddedRow;
using detail::finishEditBeforeMove;
using detail::goTo;
using detail::load;
using detail::notify;
using detail::Place;
using detail::placeAtFirst;
using detail::reachPosition;
using detail::readAllRows;
using detail::rebuildOrder;
using detail::RecordsetData;
using detail::requireColumn;
using detail::requireOpen;
using detail::requireUpdatable;
using detail::startRows;
using detail::Target;
using detail::targetAt;

namespace {

bool streamsRows(CursorType cursor, CommandType command) {
    return command != CommandType::Text && cursor == CursorType::ForwardOnly;
}

// A forward-only table-direct open starts from the table's columns alone (see RecordsetData).
std::unique_ptr<RowStore> openRows(Driver& driver, const QString& source, CursorType cursor,
                                   CommandType command) {
    if (command == CommandType::Text)
        return driver.select(source);
    return streamsRows(cursor, command) ? driver.tableStructure(source)
                                        : driver.selectTable(source);
}

} // namespace

Recordset::Recordset()
    : d(std::make_shared<RecordsetData>()) {}

Recordset::Recordset(std::shared_ptr<detail::RecordsetData> data)
    : d(std::move(data)) {}

Recordset::~Recordset() = default;
Recordset::Recordset(const Recordset&) = default;
Recordset& Recordset::operator=(const Recordset&) = default;

void Recordset::open(const QString& source, const Connection& connection, CursorType cursor,
                     LockType lock, CommandType command) {
    std::unique_ptr<RowStore> rows = openRows(connection.driver(), source, cursor, command);
    d->source = source;
    d->connection = connection;
    d->madeElsewhere = false;
    d->cursorType = cursor;
    d->lock = lock;
    d->command = command;
    d->sortText.clear();
    notify(*d, RecordsetChange::AboutToReset, -1);
    load(*d, std::move(rows));
    d->rowsPending = streamsRows(cursor, command);
    notify(*d, RecordsetChange::Reset, -1);
}

void Recordset::openRead(std::unique_ptr<RowStore> rows, const QString& source,
                         const Connection& connection, CursorType cursor, LockType lock,
                         const QString& sort) {
    d->source = source;
    d->connection = connection;
    d->madeElsewhere = false;
    d->cursorType = cursor;
    d->lock = lock;
    d->command = CommandType::Text;
    d->sortText.clear();
    notify(*d, RecordsetChange::AboutToReset, -1);
    load(*d, std::move(rows));
    if (!sort.isEmpty()) {
        // Already in this order: only named, not applied.
        d->sortColumns =
            parseSortText(sort, [this](const QString& name) { return columnByName(*d, name); });
        d->sortText = sort;
    }
    notify(*d, RecordsetChange::Reset, -1);
}

void Recordset::appendRows(const RowStore& rows) {
    requireOpen(*d);
    if (rows.rowCount() == 0)
        return;
    const qsizetype first = d->rows->rowCount();
    const qsizetype at = d->order.size();
    notify(*d, RecordsetChange::RowAboutToBeInserted, at, rows.rowCount());
    d->rows->appendRows(rows);
    d->gone.resize(d->gone.size() + size_t(rows.rowCount()), 0);
    for (qsizetype row = first; row < d->rows->rowCount(); ++row)
        d->order.append(row);
    // A cursor past the last row stays past the new last row.
    if (d->place == Place::AfterLast)
        d->position = d->order.size();
    notify(*d, RecordsetChange::RowInserted, at, rows.rowCount());
}

Recordset Recordset::fromRows(std::unique_ptr<RowStore> rows) {
    Recordset recordset;
    recordset.d->madeElsewhere = true;
    recordset.d->cursorType = CursorType::Static;
    recordset.d->lock = LockType::ReadOnly;
    load(*recordset.d, std::move(rows));
    return recordset;
}

void Recordset::close() {
    if (!d->open)
        return;
    notify(*d, RecordsetChange::AboutToReset, -1);
    // Unsaved edits go with the rows, as closing a record set discards them.
    d->changes.clear();
    d->open = false;
    d->rowsPending = false;
    d->stream.reset();
    d->rows.reset();
    d->order.clear();
    d->gone.clear();
    d->place = Place::BeforeFirst;
    d->position = -1;
    notify(*d, RecordsetChange::Reset, -1);
}

bool Recordset::isOpen() const {
    return d->open;
}

QString Recordset::source() const {
    return d->source;
}

Connection Recordset::activeConnection() const {
    return d->connection;
}

LockType Recordset::lockType() const {
    return d->lock;
}

bool Recordset::eof() const {
    requireOpen(*d);
    startRows(*d);
    return d->place == Place::AfterLast || bothEnds(*d);
}

bool Recordset::bof() const {
    requireOpen(*d);
    startRows(*d);
    return d->place == Place::BeforeFirst || bothEnds(*d);
}

qsizetype Recordset::recordCount() const {
    requireOpen(*d);
    readAllRows(*d);
    return d->order.size();
}

void Recordset::moveFirst() {
    requireOpen(*d);
    startRows(*d);
    if (d->order.isEmpty())
        throw errors::noCurrentRecord();
    goTo(*d, targetAt(*d, 0));
}

void Recordset::moveLast() {
    requireOpen(*d);
    readAllRows(*d);
    if (d->order.isEmpty())
        throw errors::noCurrentRecord();
    goTo(*d, targetAt(*d, d->order.size() - 1));
}

void Recordset::moveNext() {
    move(1);
}

void Recordset::movePrevious() {
    move(-1);
}

void Recordset::move(qsizetype rows) {
    requireOpen(*d);
    startRows(*d);
    if (bothEnds(*d))
        throw errors::noCurrentRecord();
    qsizetype target = 0;
    switch (d->place) {
    case Place::OnRow:
        target = d->position + rows;
        break;
    case Place::BeforeFirst:
        if (rows <= 0)
            throw errors::noCurrentRecord();
        target = rows - 1;
        break;
    case Place::AfterLast:
        if (rows >= 0)
            throw errors::noCurrentRecord();
        target = d->order.size() + rows;
        break;
    case Place::OnDeleted:
        // The next row already stands at `position`.
        if (rows == 0)
            throw errors::noCurrentRecord();
        target = rows > 0 ? d->position + rows - 1 : d->position + rows;
        break;
    }
    reachPosition(*d, target);
    goTo(*d, targetAt(*d, target));
}

qsizetype Recordset::position() const {
    if (!d->open)
        return -1;
    startRows(*d);
    return currentPosition(*d);
}

void Recordset::setPosition(qsizetype position) {
    requireOpen(*d);
    reachPosition(*d, position);
    if (position < 0 || position >= d->order.size())
        throw errors::invalidArgument();
    goTo(*d, targetAt(*d, position));
}

Bookmark Recordset::bookmark() const {
    if (d->open)
        startRows(*d);
    return currentRow(*d) + 1;
}

void Recordset::setBookmark(Bookmark bookmark) {
    requireOpen(*d);
    const qsizetype row = bookmark - 1;
    if (row < 0 || row >= qsizetype(d->gone.size()) || d->gone[size_t(row)])
        throw errors::bookmarkInvalid();
    goTo(*d, {Place::OnRow, row});
}

Bookmark Recordset::bookmarkAt(qsizetype position) const {
    requireOpen(*d);
    reachPosition(*d, position);
    if (position < 0 || position >= d->order.size())
        throw errors::invalidArgument();
    return d->order.rowAt(position) + 1;
}

qsizetype Recordset::positionOf(Bookmark bookmark) const {
    if (!d->open)
        return -1;
    return d->order.positionOf(bookmark - 1);
}

QString Recordset::sort() const {
    return d->sortText;
}

void Recordset::setSort(const QString& sort) {
    requireOpen(*d);
    std::vector<SortColumn> columns =
        parseSortText(sort, [this](const QString& name) { return columnByName(*d, name); });
    finishEditBeforeMove(*d);
    readAllRows(*d);
    notify(*d, RecordsetChange::AboutToReset, -1);
    d->sortText = sort;
    d->sortColumns = std::move(columns);
    rebuildOrder(*d);
    placeAtFirst(*d);
    notify(*d, RecordsetChange::Reset, -1);
}

void Recordset::requery() {
    requireOpen(*d);
    if (d->madeElsewhere)
        throw errors::notAllowedInContext();
    finishEditBeforeMove(*d);
    // Unsent batch changes would be lost with the old rows.
    if (d->changes.hasPending())
        throw errors::notAllowedInContext();
    std::unique_ptr<RowStore> rows =
        openRows(d->connection.driver(), d->source, d->cursorType, d->command);
    notify(*d, RecordsetChange::AboutToReset, -1);
    load(*d, std::move(rows));
    d->rowsPending = streamsRows(d->cursorType, d->command);
    notify(*d, RecordsetChange::Reset, -1);
}

void Recordset::addNew() {
    requireOpen(*d);
    requireUpdatable(*d);
    // Adding to rows never read leaves them unread: the new rows go to the end of the table.
    // Once reading has begun, the rest comes first, so that the new row stands last.
    d->rowsPending = false;
    if (d->stream)
        readAllRows(*d);
    finishEditBeforeMove(*d);
    const qsizetype previous = d->place == Place::OnRow ? d->order.rowAt(d->position) : -1;
    const qsizetype row = d->rows->appendEmptyRow();
    d->gone.resize(size_t(row + 1), 0);
    notify(*d, RecordsetChange::RowAboutToBeInserted, d->order.size());
    d->order.append(row);
    d->changes.beginAdd(row, d->rows->columnCount());
    d->rowBeforeAdd = previous;
    d->place = Place::OnRow;
    d->position = d->order.size() - 1;
    notify(*d, RecordsetChange::RowInserted, d->position);
    notify(*d, RecordsetChange::CurrentMoved, d->position);
}

void Recordset::update() {
    requireOpen(*d);
    commitEdit(*d);
}

void Recordset::cancelUpdate() {
    requireOpen(*d);
    if (!d->changes.isEditing())
        return;
    if (d->changes.editMode() == EditMode::Add) {
        dropAddedRow(*d, true);
        return;
    }
    const qsizetype row = d->changes.editedRow();
    d->changes.cancelEdit(*d->rows);
    notify(*d, RecordsetChange::RowChanged, d->order.positionOf(row));
}

void Recordset::deleteCurrent() {
    requireOpen(*d);
    startRows(*d);
    requireUpdatable(*d);
    const qsizetype row = currentRow(*d);
    if (d->changes.isEditing()) {
        if (d->changes.editMode() == EditMode::Add) {
            dropAddedRow(*d, false);
            return;
        }
        d->changes.cancelEdit(*d->rows);
    }
    d->changes.deleteRow(*d->rows, d->target, driverForWrites(*d), d->batch(), row);
    const qsizetype removedAt = d->position;
    notify(*d, RecordsetChange::RowAboutToBeRemoved, removedAt);
    d->gone[size_t(row)] = 1;
    d->order.removeAt(removedAt);
    d->place = Place::OnDeleted;
    notify(*d, RecordsetChange::RowRemoved, removedAt);
}

void Recordset::updateBatch() {
    requireOpen(*d);
    commitEdit(*d);
    if (!d->changes.hasPending())
        return;
    requireUpdatable(*d);
    std::vector<qsizetype> filled;
    try {
        filled = d->changes.sendPending(*d->rows, d->target, d->connection.driver());
    } catch (...) {
        // The current row becomes the one that failed (a conflicting edit), for the caller to
        // show; a failed delete has no row to show.
        const qsizetype failed = d->changes.failedRow();
        if (failed >= 0 && d->order.positionOf(failed) >= 0)
            goTo(*d, {Place::OnRow, failed});
        throw;
    }
    for (const qsizetype row : filled) {
        const qsizetype position = d->order.positionOf(row);
        if (position >= 0)
            notify(*d, RecordsetChange::RowChanged, position);
    }
}

void Recordset::cancelBatch() {
    requireOpen(*d);
    readAllRows(*d);
    if (d->changes.isEditing()) {
        if (d->changes.editMode() == EditMode::Add)
            dropAddedRow(*d, false);
        else
            d->changes.cancelEdit(*d->rows);
    }
    notify(*d, RecordsetChange::AboutToReset, -1);
    const ChangeTracker::Undone undone = d->changes.cancelPending(*d->rows);
    for (const qsizetype row : undone.revived)
        d->gone[size_t(row)] = 0;
    for (const qsizetype row : undone.dropped)
        d->gone[size_t(row)] = 1;
    rebuildOrder(*d);
    placeAtFirst(*d);
    notify(*d, RecordsetChange::Reset, -1);
}

bool Recordset::supports(CursorOption option) const {
    if (!d->open)
        return false;
    switch (option) {
    case CursorOption::AddNew:
    case CursorOption::Update:
    case CursorOption::Delete:
    case CursorOption::UpdateBatch:
        return d->target.isValid();
    case CursorOption::Bookmark:
    case CursorOption::MovePrevious:
        return true; // client-side cursors always can
    }
    return false;
}

EditMode Recordset::editMode() const {
    if (!d->open)
        return EditMode::None;
    if (d->changes.isEditing())
        return d->changes.editMode();
    if (d->place == Place::OnDeleted && d->batch())
        return EditMode::Delete;
    return EditMode::None;
}

int Recordset::fieldCount() const {
    return d->open ? d->rows->columnCount() : 0;
}

Field Recordset::field(int index) const {
    requireColumn(*d, index);
    return Field(*this, index);
}

Field Recordset::field(const QString& name) const {
    requireOpen(*d);
    const int index = fieldIndex(name);
    if (index < 0)
        throw errors::itemNotFound();
    return Field(*this, index);
}

int Recordset::fieldIndex(const QString& name) const {
    return d->open ? columnByName(*d, name) : -1;
}

const ColumnInfo& Recordset::columnInfo(int index) const {
    requireColumn(*d, index);
    return d->rows->columns().at(index);
}

bool Recordset::isColumnUpdatable(int index) const {
    return d->open && d->target.isValid() && d->target.writes(index) &&
           !d->target.isAutoIncrement(index);
}

QVariant Recordset::value(int column) const {
    requireColumn(*d, column);
    startRows(*d);
    return d->rows->value(currentRow(*d), column);
}

QVariant Recordset::value(const QString& name) const {
    return field(name).value();
}

void Recordset::setValue(int column, const QVariant& value) {
    requireColumn(*d, column);
    startRows(*d);
    const qsizetype row = currentRow(*d);
    requireUpdatable(*d);
    const bool adding = d->changes.editMode() == EditMode::Add && d->changes.editedRow() == row;
    // The engine fills an auto-increment key; only a new row may be given one.
    if (!d->target.writes(column) || (d->target.isAutoIncrement(column) && !adding))
        throw errors::notUpdatable();
    const QVariant converted = convertForColumn(value, d->rows->columns().at(column));
    d->changes.beginEdit(*d->rows, row);
    d->changes.assign(*d->rows, column, converted);
    notify(*d, RecordsetChange::RowChanged, d->position);
}

void Recordset::setValue(const QString& name, const QVariant& value) {
    field(name).setValue(value);
}

QVariant Recordset::originalValue(int column) const {
    requireColumn(*d, column);
    startRows(*d);
    return d->changes.originalValue(*d->rows, currentRow(*d), column);
}

QVariant Recordset::valueAt(qsizetype position, int column) const {
    requireColumn(*d, column);
    reachPosition(*d, position);
    if (position < 0 || position >= d->order.size())
        throw errors::invalidArgument();
    return d->rows->value(d->order.rowAt(position), column);
}

qsizetype Recordset::find(int column, const QVariant& value, qsizetype from,
                          Qt::CaseSensitivity textCase) const {
    requireColumn(*d, column);
    readAllRows(*d);
    return findValue(*d->rows, d->order.rows(), column, value, from, textCase);
}

int Recordset::subscribe(std::function<void(const RecordsetChange&)> listener) {
    const int id = d->nextListener++;
    d->listeners.emplace(id, std::move(listener));
    return id;
}

void Recordset::unsubscribe(int id) {
    d->listeners.erase(id);
}

const RowStore& Recordset::rows() const {
    requireOpen(*d);
    readAllRows(*d);
    return *d->rows;
}

} // namespace vx
