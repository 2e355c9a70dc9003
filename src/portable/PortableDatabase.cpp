#include "portable/PortableDatabase.h"

#include "data/ColumnInfo.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/SqlQuoting.h"

#include <QFileInfo>

namespace vx {

namespace {

QString quotedValue(const QString& value) {
    QString escaped = value;
    escaped.replace(u'"', QStringLiteral("\"\""));
    return u'"' + escaped + u'"';
}

// Statements creating the fixed tables, in order.
const QStringList& fixedTableStatements() {
    static const QStringList statements{
        QStringLiteral("CREATE TABLE dictionary ([words] LONGTEXT);"),
        QStringLiteral("CREATE TABLE keywords ([keyword] LONGTEXT,[itemid] LONG);"),
        QStringLiteral("CREATE TABLE KTFile ([fileid] LONG,[itemid] LONG,[fname] VARCHAR(20),"
                       "[fdate] DATETIME,[fsize] LONG,[archive] BIT,[volume] VARCHAR(11));"),
        QStringLiteral("CREATE UNIQUE INDEX pk_index ON KTFile (fileid) WITH PRIMARY;"),
        QStringLiteral("CREATE TABLE KTGroup ([Groupid] LONG,[Name] VARCHAR(25),"
                       "[Description] VARCHAR(100),[Path] VARCHAR(50),[Deleted] BIT);"),
        QStringLiteral("CREATE UNIQUE INDEX pk_index ON KTGroup (Groupid) WITH PRIMARY;"),
        QStringLiteral("CREATE TABLE KTItem ([itemid] LONG,[idx_date] DATETIME,"
                       "[username] VARCHAR(20),[type] LONG,[description] LONGTEXT,"
                       "[groupid] LONG,[lockcount] LONG,[tag] VARCHAR(25),[attachment] BIT,"
                       "[deleted] BIT);"),
        QStringLiteral("CREATE UNIQUE INDEX pk_index ON KTItem (itemid) WITH PRIMARY;"),
    };
    return statements;
}

// "CREATE TABLE [group] ([itemid] LONG,[Customer] VARCHAR(50),...);" from the repository table.
QString groupTableStatement(const QString& groupTable, const Connection& repository) {
    Recordset structure;
    // Forward-only over the table itself: telling whether it holds a row reads one piece.
    structure.open(groupTable, repository, CursorType::ForwardOnly, LockType::ReadOnly,
                   CommandType::TableDirect);
    QString statement =
        QStringLiteral("CREATE TABLE ") + bracketedName(groupTable) + QStringLiteral(" (");
    const int columns = structure.eof() ? 0 : structure.fieldCount();
    for (int i = 0; i < columns; ++i) {
        const ColumnInfo& column = structure.columnInfo(i);
        const std::optional<QString> type = portableColumnType(column);
        // A column the viewer's database cannot hold would shift every copied row's values.
        if (!type)
            throw Error(ErrorNumber::NotSupported,
                        QStringLiteral("The column %1 of %2 has a type the portable database "
                                       "does not carry (%3).")
                            .arg(column.name, groupTable)
                            .arg(int(column.type)));
        if (i > 0)
            statement += u',';
        statement += bracketedName(column.name) + u' ' + *type;
    }
    structure.close();
    return statement + QStringLiteral(");");
}

} // namespace

QString portableConnectionText(const QString& path, bool create) {
    // No waiting for the disk: a failed export takes its whole package away again, and the
    // document files beside the database are not synced either.
    QString text = QStringLiteral("Provider=SQLite;Data Source=") + quotedValue(path) +
                   QStringLiteral(";Synchronous=Off");
    if (create)
        text += QStringLiteral(";Create If Missing=True");
    return text;
}

void createPortableDatabaseFile(const QString& path) {
    if (QFileInfo::exists(path))
        throw Error(ErrorNumber::Unspecified, QStringLiteral("Database already exists."));
    Connection connection;
    connection.open(portableConnectionText(path, true));
    connection.close();
}

std::optional<QString> portableColumnType(const ColumnInfo& column) {
    switch (column.type) {
    case DataType::SmallInt:
    case DataType::Integer:
        return QStringLiteral("LONG");
    case DataType::Double:
        return QStringLiteral("DOUBLE");
    case DataType::Date:
    case DataType::DBTimeStamp:
        return QStringLiteral("DATETIME");
    case DataType::Boolean:
        return QStringLiteral("BIT");
    case DataType::VarWChar:
        return QStringLiteral("VARCHAR(") + QString::number(column.definedSize) + u')';
    case DataType::LongVarWChar:
        return QStringLiteral("LONGTEXT");
    default:
        return std::nullopt;
    }
}

bool CreatePortableTables(const QString& databasePath, const QString& groupTable,
                          const Connection& repository, const QStringList& hintTables) {
    try {
        Connection portable;
        portable.open(portableConnectionText(databasePath));
        portable.execute(groupTableStatement(groupTable, repository));
        portable.execute(QStringLiteral("CREATE UNIQUE INDEX pk_index ON ") +
                         bracketedName(groupTable) + QStringLiteral(" (itemid) WITH PRIMARY;"));
        for (const QString& statement : fixedTableStatements())
            portable.execute(statement);
        for (const QString& entry : hintTables) {
            const qsizetype equals = entry.indexOf(u'=');
            const QString table = equals < 0 ? entry : entry.left(equals);
            const QString column = equals < 0 ? QString() : entry.mid(equals + 1);
            portable.execute(QStringLiteral("CREATE TABLE ") + bracketedName(table) + u'(' +
                             bracketedName(column) + QStringLiteral(" VARCHAR(20));"));
        }
        portable.close();
        return true;
    } catch (const std::exception&) {
        // The caller reports the failure in its own words.
        return false;
    }
}

} // namespace vx
