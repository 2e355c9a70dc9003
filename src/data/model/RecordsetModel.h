#pragma once

#include "data/Recordset.h"

#include <QAbstractTableModel>
#include <VXUILib/vxdata_export.h>
#include <memory>

namespace vx {

class Error;

// The one table model every bound grid of the library uses: one row per record in the record
// set's current order, one column per field. Cells are read from the record set one value at a
// time; edits, added and removed rows go through the record set (and so to the base table).
// Failures come back as a false result plus errorOccurred with the error's description.
// Exported for the controls' library; hosts never see it.
class VXDATA_EXPORT RecordsetModel : public QAbstractTableModel {
    Q_OBJECT

public:
    // Display formats a column may be given; an empty format shows values as they are.
    static inline const QString YesNo = QStringLiteral("Yes/No");
    static inline const QString TrueFalse = QStringLiteral("True/False");
    static inline const QString OnOff = QStringLiteral("On/Off");
    static inline const QString ShortDate = QStringLiteral("Short Date");
    static inline const QString LongDate = QStringLiteral("Long Date");
    static inline const QString GeneralDate = QStringLiteral("General Date");
    static inline const QString ShortTime = QStringLiteral("Short Time");

    explicit RecordsetModel(QObject* parent = nullptr);
    ~RecordsetModel() override;

    // Binds a record set (a shared handle; the model follows its notifications). Columns get
    // their default formats: Yes/No for Boolean fields, General Date for dates.
    void setRecordset(const Recordset& recordset);
    Recordset recordset() const;
    void clear();

    void setColumnFormat(int column, const QString& format);
    QString columnFormat(int column) const;
    // The text a cell shows, with its column's format.
    QString displayText(int row, int column) const;

    // 0 when the row does not exist; -1 when the bookmark's row is gone.
    Bookmark bookmarkForRow(int row) const;
    int rowForBookmark(Bookmark bookmark) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    // One row at a time, at the end only (a new record).
    bool insertRows(int row, int count, const QModelIndex& parent = {}) override;
    bool removeRows(int row, int count, const QModelIndex& parent = {}) override;
    // Sorts the record set by the column's field.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

signals:
    void errorOccurred(const QString& description, qint32 number);
    // The record set's current row moved (-1: before the first or after the last).
    void currentRowChanged(int row);

private:
    struct Private;
    std::unique_ptr<Private> const d;

    void onChange(const RecordsetChange& change);
    void resetFormats();
    void reportError(const Error& error);
};

} // namespace vx
