#include "operations/DataExportTable.h"

#include "data/Error.h"
#include "session/Conversions.h"
#include "session/companions/VXDynaForm.h"

namespace vx::dataexport {

namespace {

constexpr int columnNameLength = 10;

int resultColumnOf(const Recordset& result, const QString& fieldName, const QString& caption) {
    const int byName = result.fieldIndex(fieldName);
    if (byName >= 0 || caption.isEmpty())
        return byName;
    return result.fieldIndex(caption);
}

} // namespace

QString columnTypeText(DataType type, qint32 definedSize) {
    switch (type) {
    case DataType::VarWChar:
        // The widest FoxPro character field is 254.
        return QStringLiteral(" CHAR(%1)").arg(definedSize == 255 ? 254 : definedSize);
    case DataType::LongVarWChar:
        return QStringLiteral(" MEMO");
    case DataType::Integer:
    case DataType::Double:
        return QStringLiteral(" NUMERIC");
    case DataType::Date:
    case DataType::DBTimeStamp:
        return QStringLiteral(" DATE");
    case DataType::Boolean:
        return QStringLiteral(" BOOL");
    default:
        return {};
    }
}

QList<FormColumn> formColumns(VXDynaForm& form, const Recordset& result) {
    QList<FormColumn> columns;
    form.MoveFirstField();
    while (!form.FieldEOF()) {
        const QString name = form.FieldName();
        const int index = resultColumnOf(result, name, form.FieldCaption());
        if (index >= 0) {
            const ColumnInfo& info = result.columnInfo(index);
            const QString typeText = columnTypeText(info.type, info.definedSize);
            if (!typeText.isEmpty())
                columns << FormColumn{name, name.left(columnNameLength), typeText};
        }
        form.MoveNextField();
    }
    return columns;
}

QString createTableText(const QString& table, qint32 fileNameSize,
                        const QList<FormColumn>& columns) {
    QString sql = QStringLiteral("CREATE TABLE ") + table + QStringLiteral("(") +
                  QStringLiteral("itemid NUMERIC,") + QStringLiteral("idx_date DATE,") +
                  QStringLiteral("type_ NUMERIC,") + QStringLiteral("fileid NUMERIC,") +
                  QStringLiteral("filename CHAR(") + QString::number(fileNameSize) +
                  QStringLiteral("),") + QStringLiteral("fdate_ DATE,") +
                  QStringLiteral("fsize_ NUMERIC,") + QStringLiteral("disklabel CHAR(13)");
    for (const FormColumn& column : columns)
        sql += QStringLiteral(",") + column.columnName + column.typeText;
    return sql + QStringLiteral(");");
}

QChar firstInvalidTableNameCharacter(const QString& name) {
    for (const QChar c : name) {
        const QChar upper = c.toUpper();
        const bool digit = upper >= u'0' && upper <= u'9';
        const bool letter = upper >= u'A' && upper <= u'Z';
        if (!digit && !letter)
            return c;
    }
    return {};
}

QString invalidTableNameMessage(QChar character) {
    return QStringLiteral("Invalid character [") + character + QStringLiteral("] in Table Name.") +
           QStringLiteral("\r") + QStringLiteral("Please change the name and try again.");
}

QString fileExistsMessage(const QString& table) {
    return QStringLiteral("File already exists: ") + table + QStringLiteral(".dbf") +
           QStringLiteral("\r\n\r\n") + QStringLiteral("Choose a different name.");
}

QString exportConnectionText(const QString& folder) {
    return QStringLiteral("Provider=MSDASQL.1;Persist Security Info=False;") +
           QStringLiteral("Mode=ReadWrite;Extended Properties=") +
           QStringLiteral("DSN=Visual FoxPro Tables;UID=;SourceType=DBF;") +
           QStringLiteral("Exclusive=Yes;BackgroundFetch=Yes;Collate=Machine;") +
           QStringLiteral("Null=Yes;Deleted=Yes;") + QStringLiteral("SourceDB=") + folder +
           QStringLiteral(";\"");
}

void openExportConnection(Connection& connection, const QString& folder) {
    connection.open(exportConnectionText(folder));
}

QString documentQuery(const QString& groupTable, qint32 itemId) {
    const QString& g = groupTable;
    return QStringLiteral("select ktfile.*,") + g +
           QStringLiteral(".*,ktitem.itemid,ktitem.idx_date,ktitem.type from ktfile,ktitem,") + g +
           QStringLiteral(" where ktfile.itemid =") + g +
           QStringLiteral(".itemid and ktfile.itemid=ktitem.itemid and ktfile.itemid=") +
           numberToText(qint64(itemId));
}

} // namespace vx::dataexport
