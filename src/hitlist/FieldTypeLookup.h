#pragma once

#include <QString>

namespace vx {

class VXDynaForm;

// A result column's field type ("EditField", "DateField" ...) and database column name.
struct ColumnFieldType {
    QString type;
    QString columnName;
};

// The field type of the grid column captioned `caption`: the item id and index date columns by
// name, every other column through the record form's field whose caption matches (letter case
// ignored; the last match wins) and that field's layout values. Empty texts when nothing matches.
ColumnFieldType GetFieldType(VXDynaForm* form, const QString& caption);

} // namespace vx
