#pragma once

#include "data/Recordset.h"

#include <QList>
#include <QString>

namespace vx {

class VXDynaForm;

namespace dataexport {

// One form field that gets a column in the export table.
struct FormColumn {
    QString fieldName;  // the group table's column
    QString columnName; // the first 10 characters of the field name
    QString typeText;   // " CHAR(n)", " MEMO", " NUMERIC", " DATE" or " BOOL"
};

// The export table's column type for a result column of ADO type `type`: empty when the type
// has no column.
QString columnTypeText(DataType type, qint32 definedSize);

// The form's fields in form order that have a mapped type. The type is that of the field's
// column in the hit list's result; a result that names the column by the field's caption is
// looked up by the caption.
QList<FormColumn> formColumns(VXDynaForm& form, const Recordset& result);

// The statement that creates the table: the fixed item and file columns, then the form's.
QString createTableText(const QString& table, qint32 fileNameSize,
                        const QList<FormColumn>& columns);

// The first character of `name` that is neither a digit nor a letter A to Z (taken upper-cased),
// or a null character when there is none.
QChar firstInvalidTableNameCharacter(const QString& name);
QString invalidTableNameMessage(QChar character);
QString fileExistsMessage(const QString& table);

// The connection text of the FoxPro tables in `folder`.
QString exportConnectionText(const QString& folder);
// Opens `connection` on that text.
void openExportConnection(Connection& connection, const QString& folder);

// One document's first file, item and group row.
QString documentQuery(const QString& groupTable, qint32 itemId);

} // namespace dataexport
} // namespace vx
