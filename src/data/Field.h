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

// One column of a record set at its current row; a light view that reads through the record set.
// It shares the record set's cursor, so it stays valid after the handle it came from is gone.
class VXDATA_EXPORT Field {
public:
    Field(const Recordset& recordset, int index);

    int index() const { return m_index; }
    QString name() const;
    DataType type() const;
    qint32 definedSize() const;
    const ColumnInfo& info() const;

    QVariant value() const;
    bool isNull() const;
    // Converts to the field's type as the platform does (text to date, Boolean to -1/0 ...);
    // throws TypeMismatch, Overflow or ValueDoesNotFit.
    void setValue(const QVariant& value);
    QVariant originalValue() const;

private:
    Recordset recordset() const;

    std::shared_ptr<detail::RecordsetData> m_data;
    int m_index;
};

// Converts a value to what a column of the given type holds; throws as Field::setValue.
VXDATA_EXPORT QVariant convertForColumn(const QVariant& value, const ColumnInfo& column);

} // namespace vx
