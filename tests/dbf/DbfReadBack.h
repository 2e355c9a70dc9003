#pragma once

#include "data/Recordset.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace vx::test {

// A table as the reference reader (python3-dbfread) sees it: "fields" [{name, type, length,
// decimals}] and "records" [{field: value}], dates as ISO text, memos as text.
struct ReadBack {
    bool ok = false;
    QString skipReason; // set when the reader is not installed
    QString error;      // set when the reader failed on the table
    QJsonArray fields;
    QJsonArray records;

    QJsonObject field(const QString& name) const;
};

// Reads `path` with the reference reader.
ReadBack readWithDbfread(const QString& path);
// Why the reference reader cannot run here, or empty when it can.
QString dbfreadUnavailable();

QByteArray fileBytes(const QString& path);

// The connection text of a folder of FoxPro tables.
inline QString foxProConnectionText(const QString& folder) {
    return QStringLiteral("Provider=MSDASQL.1;SourceType=DBF;SourceDB=") + folder + u';';
}

// A table with a column of every type the writer knows, its columns in order, and a record
// appended through a record set with values in that order.
inline QString createPeople(const QString& name) {
    return QStringLiteral("CREATE TABLE ") + name +
           QStringLiteral("(itemid NUMERIC,born DATE,name CHAR(10),wide CHAR(254),notes MEMO,"
                          "active BOOL,ratio NUMERIC(8,2));");
}
inline const QStringList peopleColumns{"itemid", "born",   "name", "wide",
                                       "notes",  "active", "ratio"};
inline void appendPerson(Recordset& table, const QVariantList& values) {
    table.addNew();
    for (qsizetype i = 0; i < peopleColumns.size(); ++i)
        table.setValue(peopleColumns[i], values.value(i));
    table.update();
}

} // namespace vx::test
