#include "data/model/RecordsetModel.h"

#include "data/DataType.h"
#include "data/Error.h"
#include "data/RetryTransient.h"
#include "data/recordset/DateText.h"

#include <QDateTime>
#include <QLocale>

namespace vx {

struct RecordsetModel::Private {
    Recordset recordset;
    int subscription = 0;
    // Kept here so that the count changes exactly between the begin and end of a change.
    int rows = 0;
    int columns = 0;
    QStringList formats;
    QStringList formattedNames; // the columns the formats were made for
    // Set between an "about to" notice and the one that completes it.
    bool resetting = false;
    bool inserting = false;
    bool removing = false;
};

namespace {

bool isNumber(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

QString formatted(const QVariant& value, const QString& format) {
    if (!value.isValid())
        return {};
    auto flag = [&](const char* yes, const char* no) {
        return QString::fromLatin1(value.toDouble() != 0.0 ? yes : no);
    };
    if (isNumber(value)) {
        if (format == RecordsetModel::YesNo)
            return flag("Yes", "No");
        if (format == RecordsetModel::TrueFalse)
            return flag("True", "False");
        if (format == RecordsetModel::OnOff)
            return flag("On", "Off");
    }
    if (value.typeId() == QMetaType::QDateTime) {
        const QDateTime date = value.toDateTime();
        if (format == RecordsetModel::ShortDate)
            return datetext::formatShortDate(date);
        if (format == RecordsetModel::LongDate)
            return datetext::formatLongDate(date);
        if (format == RecordsetModel::ShortTime)
            return datetext::formatShortTime(date);
        return datetext::formatGeneralDate(date);
    }
    if (value.typeId() == QMetaType::Double)
        return QLocale().toString(value.toDouble(), 'g', 15);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    return value.toString();
}

} // namespace

RecordsetModel::RecordsetModel(QObject* parent)
    : QAbstractTableModel(parent)
    , d(std::make_unique<Private>()) {}

RecordsetModel::~RecordsetModel() {
    if (d->subscription)
        d->recordset.unsubscribe(d->subscription);
}

void RecordsetModel::setRecordset(const Recordset& recordset) {
    beginResetModel();
    if (d->subscription)
        d->recordset.unsubscribe(d->subscription);
    d->recordset = recordset;
    d->subscription =
        d->recordset.subscribe([this](const RecordsetChange& change) { onChange(change); });
    d->rows = d->recordset.isOpen() ? int(d->recordset.recordCount()) : 0;
    d->columns = d->recordset.fieldCount();
    resetFormats();
    endResetModel();
}

Recordset RecordsetModel::recordset() const {
    return d->recordset;
}

void RecordsetModel::clear() {
    setRecordset(Recordset());
}

void RecordsetModel::resetFormats() {
    d->formats.clear();
    d->formattedNames.clear();
    for (int column = 0; column < d->columns; ++column) {
        const DataType type = d->recordset.columnInfo(column).type;
        if (type == DataType::Boolean)
            d->formats << YesNo;
        else if (storageKindOf(type) == StorageKind::DateTime)
            d->formats << GeneralDate;
        else
            d->formats << QString();
        d->formattedNames << d->recordset.columnInfo(column).name;
    }
}

void RecordsetModel::onChange(const RecordsetChange& change) {
    const int position = int(change.position);
    switch (change.kind) {
    case RecordsetChange::AboutToReset:
        if (!d->resetting)
            beginResetModel();
        d->resetting = true;
        break;
    case RecordsetChange::RowAboutToBeInserted:
        beginInsertRows({}, position, position + int(change.count) - 1);
        d->inserting = true;
        break;
    case RecordsetChange::RowAboutToBeRemoved:
        beginRemoveRows({}, position, position);
        d->removing = true;
        break;
    case RecordsetChange::Reset: {
        if (!d->resetting)
            beginResetModel();
        d->resetting = false;
        const bool open = d->recordset.isOpen();
        d->rows = open ? int(d->recordset.recordCount()) : 0;
        d->columns = d->recordset.fieldCount();
        // A sort or requery keeps the formats a grid gave its columns; other columns start over.
        QStringList names;
        for (int column = 0; column < d->columns; ++column)
            names << d->recordset.columnInfo(column).name;
        if (names != d->formattedNames)
            resetFormats();
        endResetModel();
        break;
    }
    case RecordsetChange::RowInserted:
        if (!d->inserting)
            beginInsertRows({}, position, position + int(change.count) - 1);
        d->inserting = false;
        d->rows += int(change.count);
        endInsertRows();
        break;
    case RecordsetChange::RowRemoved:
        if (!d->removing)
            beginRemoveRows({}, position, position);
        d->removing = false;
        --d->rows;
        endRemoveRows();
        break;
    case RecordsetChange::RowChanged:
        if (position >= 0 && position < d->rows && d->columns > 0)
            emit dataChanged(index(position, 0), index(position, d->columns - 1));
        break;
    case RecordsetChange::CurrentMoved:
        emit currentRowChanged(position);
        break;
    }
}

void RecordsetModel::setColumnFormat(int column, const QString& format) {
    if (column < 0 || column >= d->formats.size() || d->formats[column] == format)
        return;
    d->formats[column] = format;
    if (d->rows > 0)
        emit dataChanged(index(0, column), index(d->rows - 1, column), {Qt::DisplayRole});
}

QString RecordsetModel::columnFormat(int column) const {
    return d->formats.value(column);
}

QString RecordsetModel::displayText(int row, int column) const {
    return data(index(row, column), Qt::DisplayRole).toString();
}

Bookmark RecordsetModel::bookmarkForRow(int row) const {
    if (row < 0 || row >= d->rows || row >= d->recordset.recordCount())
        return 0;
    return d->recordset.bookmarkAt(row);
}

int RecordsetModel::rowForBookmark(Bookmark bookmark) const {
    return int(d->recordset.positionOf(bookmark));
}

int RecordsetModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : d->rows;
}

int RecordsetModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : d->columns;
}

QVariant RecordsetModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || !d->recordset.isOpen())
        return {};
    // While a removal is being announced the record set is already one row shorter.
    if (index.row() >= d->recordset.recordCount() || index.column() >= d->columns)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return formatted(d->recordset.valueAt(index.row(), index.column()),
                         d->formats.value(index.column()));
    case Qt::EditRole:
        return d->recordset.valueAt(index.row(), index.column());
    case Qt::TextAlignmentRole: {
        const DataType type = d->recordset.columnInfo(index.column()).type;
        const StorageKind kind = storageKindOf(type);
        if ((kind == StorageKind::Integer && type != DataType::Boolean) ||
            kind == StorageKind::Real)
            return QVariant::fromValue(Qt::Alignment(Qt::AlignRight | Qt::AlignVCenter));
        return {};
    }
    default:
        return {};
    }
}

QVariant RecordsetModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (section < 0 || section >= d->columns)
        return {};
    return d->recordset.columnInfo(section).name;
}

Qt::ItemFlags RecordsetModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.isValid() && d->recordset.isColumnUpdatable(index.column()))
        flags |= Qt::ItemIsEditable;
    return flags;
}

void RecordsetModel::reportError(const Error& error) {
    emit errorOccurred(error.description(), error.number());
}

bool RecordsetModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    Recordset recordset = d->recordset;
    try {
        recordset.setPosition(index.row());
        recordset.setValue(index.column(), value);
        // Sent again when it loses to another user's lock or deadlock; a row changed meanwhile
        // fails as a conflict.
        retryTransient([&] { recordset.update(); });
        return true;
    } catch (const Error& error) {
        // Nothing half-written: the row keeps what the table has.
        try {
            recordset.cancelUpdate();
        } catch (const Error&) {
        }
        reportError(error);
        return false;
    }
}

bool RecordsetModel::insertRows(int row, int count, const QModelIndex& parent) {
    if (parent.isValid() || count != 1 || row != d->rows)
        return false;
    try {
        d->recordset.addNew();
        return true;
    } catch (const Error& error) {
        reportError(error);
        return false;
    }
}

bool RecordsetModel::removeRows(int row, int count, const QModelIndex& parent) {
    if (parent.isValid() || count < 1 || row < 0 || row + count > d->rows)
        return false;
    Recordset recordset = d->recordset;
    try {
        for (int i = 0; i < count; ++i) {
            recordset.setPosition(row); // the next one slides into place
            recordset.deleteCurrent();
        }
        return true;
    } catch (const Error& error) {
        reportError(error);
        return false;
    }
}

void RecordsetModel::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= d->columns)
        return;
    try {
        const QString name = d->recordset.columnInfo(column).name;
        d->recordset.setSort(
            QLatin1Char('[') + name + QLatin1String("] ") +
            (order == Qt::AscendingOrder ? QLatin1String("ASC") : QLatin1String("DESC")));
    } catch (const Error& error) {
        reportError(error);
    }
}

} // namespace vx
