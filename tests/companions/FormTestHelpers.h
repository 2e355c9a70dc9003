#pragma once

#include "companions/DynaForm.h"

#include <QString>
#include <QVariant>

namespace vx::test {

// Moves the form's cursor to the n-th field (1-based) of a column; false when there is none.
inline bool moveToField(VXDynaForm& form, const QString& column, int occurrence = 1) {
    int seen = 0;
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        if (form.FieldName().compare(column, Qt::CaseInsensitive) == 0 && ++seen == occurrence)
            return true;
    }
    return false;
}

inline void setField(VXDynaForm& form, const QString& column, const QVariant& value,
                     int occurrence = 1) {
    if (moveToField(form, column, occurrence))
        form.setFieldValue(value);
}

} // namespace vx::test
