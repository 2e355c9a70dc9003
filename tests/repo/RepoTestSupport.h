#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <ostream>

// Readable texts in gtest's failure messages.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}

namespace vx::test {

// Every value of the first column of a query.
inline QVariantList columnValues(Connection& connection, const QString& sql) {
    Recordset rows;
    rows.open(sql, connection);
    QVariantList values;
    for (; !rows.eof(); rows.moveNext())
        values.append(rows.value(0));
    return values;
}

inline qint64 rowCount(Connection& connection, const QString& table) {
    Recordset rows;
    rows.open(QStringLiteral("SELECT COUNT(*) AS n FROM [%1]").arg(table), connection);
    return rows.value(0).toLongLong();
}

inline QStringList tableNames(Connection& connection) {
    Recordset tables = connection.openSchema(SchemaKind::Tables);
    QStringList names;
    for (; !tables.eof(); tables.moveNext()) {
        if (tables.value(QStringLiteral("TABLE_TYPE")).toString() == QLatin1String("TABLE"))
            names.append(tables.value(QStringLiteral("TABLE_NAME")).toString());
    }
    return names;
}

} // namespace vx::test
