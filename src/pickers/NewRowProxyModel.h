#pragma once

#include <QIdentityProxyModel>

namespace vx {

class RecordsetModel;

// A record set's rows plus one empty row at the end, as data grids offer for a new record:
// typing into it adds the record (and so writes it to the table); leaving it empty adds nothing.
// The extra row exists only while the bound record set can add rows.
class NewRowProxyModel : public QIdentityProxyModel {
    Q_OBJECT

public:
    explicit NewRowProxyModel(RecordsetModel* records, QObject* parent = nullptr);

    bool isNewRow(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex mapToSource(const QModelIndex& proxyIndex) const override;
    QModelIndex buddy(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

private:
    bool hasNewRow() const;

    RecordsetModel* const m_records;
};

} // namespace vx
