#pragma once

#include <QVariant>
#include <VXUILib/ColumnInfo.h>
#include <VXUILib/vxdata_export.h>
#include <memory>

namespace vx {

class Recordset;
namespace detail {
struct RecordsetData;
}

/// One column of a record set at its current row; a light view that reads through the record
/// set. It shares the record set's cursor, so it stays valid after the handle it came from is
/// gone.
class VXDATA_EXPORT Field {
public:
    /// The column at 0-based `index` of the record set.
    Field(const Recordset& recordset, int index);

    /// The column's 0-based position in the record set.
    int index() const { return m_index; }
    /// The column's name as the result gives it.
    QString name() const;
    /// The column's type code.
    DataType type() const;
    /// Characters for text columns, bytes for fixed-size types.
    qint32 definedSize() const;
    /// Everything the result knows about the column.
    const ColumnInfo& info() const;

    /// The value at the current row (a null QVariant for NULL).
    QVariant value() const;
    /// True when the value at the current row is NULL.
    bool isNull() const;
    /// Assigns a value at the current row, converted to the field's type as the platform does
    /// (text to date, Boolean to -1/0 ...); throws TypeMismatch, Overflow or ValueDoesNotFit.
    void setValue(const QVariant& value);
    /// The value as read from the repository, before any pending change.
    QVariant originalValue() const;

private:
    Recordset recordset() const;

    std::shared_ptr<detail::RecordsetData> m_data;
    int m_index;
};

/// Converts a value to what a column of the given type holds; throws as Field::setValue.
VXDATA_EXPORT QVariant convertForColumn(const QVariant& value, const ColumnInfo& column);

} // namespace vx
