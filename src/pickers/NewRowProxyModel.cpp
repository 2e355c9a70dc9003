#include "pickers/NewRowProxyModel.h"

#include "data/model/RecordsetModel.h"

namespace vx {

NewRowProxyModel::NewRowProxyModel(RecordsetModel* records, QObject* parent)
    : QIdentityProxyModel(parent)
    , m_records(records) {
    setSourceModel(records);
}

bool NewRowProxyModel::hasNewRow() const {
    return m_records->columnCount() > 0 && m_records->recordset().supports(CursorOption::AddNew);
}

bool NewRowProxyModel::isNewRow(int row) const {
    return hasNewRow() && row == m_records->rowCount();
}

int NewRowProxyModel::rowCount(const QModelIndex& parent) const {
    if (parent.isValid())
        return 0;
    return m_records->rowCount() + (hasNewRow() ? 1 : 0);
}

QModelIndex NewRowProxyModel::index(int row, int column, const QModelIndex& parent) const {
    if (!parent.isValid() && isNewRow(row) && column >= 0 && column < columnCount())
        return createIndex(row, column);
    return QIdentityProxyModel::index(row, column, parent);
}

QModelIndex NewRowProxyModel::mapToSource(const QModelIndex& proxyIndex) const {
    if (proxyIndex.isValid() && isNewRow(proxyIndex.row()))
        return {};
    return QIdentityProxyModel::mapToSource(proxyIndex);
}

// Views edit a cell through its buddy; the new row has no source cell to ask.
QModelIndex NewRowProxyModel::buddy(const QModelIndex& index) const {
    if (index.isValid() && isNewRow(index.row()))
        return index;
    return QIdentityProxyModel::buddy(index);
}

QVariant NewRowProxyModel::data(const QModelIndex& index, int role) const {
    if (index.isValid() && isNewRow(index.row()))
        return role == Qt::EditRole ? QVariant(QString()) : QVariant();
    return QIdentityProxyModel::data(index, role);
}

QVariant NewRowProxyModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical && role == Qt::DisplayRole && isNewRow(section))
        return QStringLiteral("*");
    return QIdentityProxyModel::headerData(section, orientation, role);
}

Qt::ItemFlags NewRowProxyModel::flags(const QModelIndex& index) const {
    if (index.isValid() && isNewRow(index.row()))
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
    return QIdentityProxyModel::flags(index);
}

bool NewRowProxyModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || !isNewRow(index.row()))
        return QIdentityProxyModel::setData(index, value, role);
    // Opening the new row's editor and leaving it empty must not add an empty record.
    if (role != Qt::EditRole || value.toString().isEmpty())
        return false;
    const int row = m_records->rowCount();
    if (!m_records->insertRows(row, 1))
        return false;
    // On failure the record set drops the half-made row again.
    return m_records->setData(m_records->index(row, index.column()), value, role);
}

} // namespace vx
