#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"

#include <QStringList>

namespace vx::test {

// Rows of a query as text, one "a|b|c" line per row.
inline QStringList rowsOf(const Connection& connection, const QString& sql) {
    Recordset rows;
    rows.open(sql, connection);
    QStringList lines;
    for (; !rows.eof(); rows.moveNext()) {
        QStringList values;
        for (int i = 0; i < rows.fieldCount(); ++i)
            values << rows.value(i).toString();
        lines << values.join(u'|');
    }
    return lines;
}

} // namespace vx::test
