#include "data/Field.h"

#include "data/Recordset.h"

namespace vx {

Field::Field(const Recordset& recordset, int index)
    : m_data(recordset.d)
    , m_index(index) {}

Recordset Field::recordset() const {
    return Recordset(m_data);
}

QString Field::name() const {
    return info().name;
}

DataType Field::type() const {
    return info().type;
}

qint32 Field::definedSize() const {
    return info().definedSize;
}

const ColumnInfo& Field::info() const {
    return recordset().columnInfo(m_index);
}

QVariant Field::value() const {
    return recordset().value(m_index);
}

bool Field::isNull() const {
    return !value().isValid();
}

void Field::setValue(const QVariant& value) {
    recordset().setValue(m_index, value);
}

QVariant Field::originalValue() const {
    return recordset().originalValue(m_index);
}

} // namespace vx
