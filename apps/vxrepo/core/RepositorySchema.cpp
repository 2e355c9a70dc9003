#include "core/RepositorySchema.h"

#include "session/Schema.h"

namespace vx::repo {
namespace {

struct TableDefinition {
    QString name;
    QString columns;
    QStringList key;
    QStringList indexedColumns; // looked up or joined by these
};

QList<TableDefinition> fixedTables() {
    return {
        {table::Item,
         QStringLiteral("[itemid] LONG NOT NULL, [idx_date] DATETIME, [username] VARCHAR(50), "
                        "[type] LONG, [description] LONGTEXT, [groupid] LONG, [lockcount] LONG, "
                        "[tag] VARCHAR(50), [attachment] YESNO, [deleted] YESNO"),
         {QStringLiteral("itemid")},
         {QStringLiteral("groupid")}},
        {table::File,
         QStringLiteral("[fileid] LONG NOT NULL, [itemid] LONG, [fname] VARCHAR(255), "
                        "[fdate] DATETIME, [fsize] LONG, [archive] YESNO, [volume] VARCHAR(11)"),
         {QStringLiteral("fileid")},
         {QStringLiteral("itemid")}},
        {table::Group,
         QStringLiteral("[Groupid] LONG NOT NULL, [Name] VARCHAR(50), [Description] VARCHAR(255), "
                        "[Path] VARCHAR(255), [Deleted] YESNO"),
         {QStringLiteral("Groupid")},
         {QStringLiteral("Name")}},
        {table::Users,
         QStringLiteral("[UserID] LONG NOT NULL, [UserName] VARCHAR(50)"),
         {QStringLiteral("UserID")},
         {QStringLiteral("UserName")}},
        {table::Path, QStringLiteral("[Path] VARCHAR(255)"), {}, {}},
        {table::Revision,
         QStringLiteral("[itemid] LONG NOT NULL, [Version] LONG NOT NULL, [fname] VARCHAR(255), "
                        "[idx_date] DATETIME, [volume] VARCHAR(11), [username] VARCHAR(50), "
                        "[res_desc] VARCHAR(255), [rel_desc] LONGTEXT"),
         {QStringLiteral("itemid"), QStringLiteral("Version")},
         {}},
        {table::Security,
         QStringLiteral("[itemid] LONG NOT NULL, [UserID] LONG NOT NULL"),
         {QStringLiteral("itemid"), QStringLiteral("UserID")},
         {QStringLiteral("UserID")}},
        {table::Keywords,
         QStringLiteral("[keyword] VARCHAR(50), [itemid] LONG"),
         {},
         {QStringLiteral("itemid"), QStringLiteral("keyword")}},
        {table::Dictionary, QStringLiteral("[words] VARCHAR(50)"), {}, {QStringLiteral("words")}},
        // Empty: each counter row starts from the highest id in use when first needed.
        {table::Counter,
         QStringLiteral("[name] VARCHAR(20) NOT NULL, [lastid] LONG NOT NULL"),
         {QStringLiteral("name")},
         {}},
    };
}

QString bracketedList(const QStringList& names) {
    QStringList bracketed;
    for (const QString& name : names)
        bracketed.append(u'[' + name + u']');
    return bracketed.join(QStringLiteral(", "));
}

QStringList statementsFor(const TableDefinition& table) {
    QString create = QStringLiteral("CREATE TABLE [%1] (%2").arg(table.name, table.columns);
    // Constraint and index names are per database on some engines, so they carry the table name.
    if (!table.key.isEmpty())
        create += QStringLiteral(", CONSTRAINT [pk_%1] PRIMARY KEY (%2)")
                      .arg(table.name, bracketedList(table.key));
    create += u')';
    QStringList statements{create};
    for (const QString& column : table.indexedColumns)
        statements.append(
            QStringLiteral("CREATE INDEX [ix_%1_%2] ON [%1] ([%2])").arg(table.name, column));
    return statements;
}

} // namespace

QStringList fixedTableStatements() {
    QStringList statements;
    for (const TableDefinition& table : fixedTables())
        statements += statementsFor(table);
    return statements;
}

QStringList fixedTableNames() {
    QStringList names;
    for (const TableDefinition& table : fixedTables())
        names.append(table.name);
    return names;
}

QStringList groupTableStatements(const QString& groupName, const QList<FormField>& fields) {
    QStringList columns{QStringLiteral("[itemid] LONG NOT NULL")};
    for (const FormField& field : fields)
        columns.append(QStringLiteral("[%1] %2").arg(field.columnName, columnDeclaration(field)));
    return statementsFor(
        {groupName, columns.join(QStringLiteral(", ")), {QStringLiteral("itemid")}, {}});
}

QString hintTableStatement(const QString& groupName, const FormField& field) {
    return QStringLiteral("CREATE TABLE [%1] ([%2] %3)")
        .arg(hintTableName(groupName, field.columnName), field.columnName,
             columnDeclaration(field));
}

QString sqlText(const QString& value) {
    QString escaped = value;
    escaped.replace(u'\'', QStringLiteral("''"));
    return u'\'' + escaped + u'\'';
}

} // namespace vx::repo
