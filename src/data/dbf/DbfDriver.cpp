#include "data/dbf/DbfDriver.h"

#include "data/Error.h"
#include "data/RowStore.h"
#include "data/dbf/CreateTableStatement.h"
#include "data/dbf/DbfRowAppender.h"
#include "data/dbf/DbfTableFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <limits>
#include <map>

namespace vx {

namespace {

const QString tableSuffix = QStringLiteral(".dbf");

Error notSupported(const QString& what) {
    return Error(ErrorNumber::NotSupported,
                 QStringLiteral("The FoxPro table driver does not support %1.").arg(what));
}

// "name", "[name]" or "name.dbf" -> name; empty when it is not a plain table name.
QString plainTableName(const QString& given) {
    QString name = given.trimmed();
    if (name.startsWith(u'[') && name.endsWith(u']'))
        name = name.mid(1, name.size() - 2).trimmed();
    if (name.endsWith(tableSuffix, Qt::CaseInsensitive))
        name.chop(tableSuffix.size());
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z0-9_]+$"));
    return pattern.match(name).hasMatch() ? name : QString();
}

struct OpenTable {
    // Shared with the table's appenders, which find it closed once the connection is.
    std::shared_ptr<dbf::DbfTableFile> file;
    // The columns of the last insert and their fields: a record set sends the same list each time.
    QStringList lastColumns;
    QList<int> lastFields;
};

} // namespace

struct DbfDriver::Private {
    QString folder;
    bool open = false;
    std::map<QString, OpenTable> tables; // by lower-case name

    void requireOpen() const {
        if (!open)
            throw Error(ErrorNumber::ObjectClosed,
                        QStringLiteral("Operation is not allowed when the object is closed."));
    }

    // The table's file, found without regard to case as the platform's file names are.
    QString pathOf(const QString& name) const {
        const QString wanted = name + tableSuffix;
        const QDir dir(folder);
        for (const QString& entry : dir.entryList(QDir::Files)) {
            if (entry.compare(wanted, Qt::CaseInsensitive) == 0)
                return dir.filePath(entry);
        }
        return dir.filePath(wanted);
    }

    QString checkedName(const QString& given) const {
        const QString name = plainTableName(given);
        if (name.isEmpty())
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("'%1' is not a valid table name.").arg(given));
        return name;
    }

    OpenTable& table(const QString& given) {
        requireOpen();
        const QString name = checkedName(given);
        auto found = tables.find(name.toLower());
        if (found != tables.end())
            return found->second;
        const QString path = pathOf(name);
        if (!QFileInfo::exists(path))
            throw Error(ErrorNumber::TableNotFound,
                        QStringLiteral("File '%1' does not exist.").arg(path));
        OpenTable entry;
        entry.file = dbf::DbfTableFile::open(path);
        return tables.emplace(name.toLower(), std::move(entry)).first->second;
    }
};

DbfDriver::DbfDriver()
    : d(std::make_unique<Private>()) {}

DbfDriver::~DbfDriver() {
    try {
        close();
    } catch (...) { // tearing down: the tables' own destructors close what they can
    }
}

QString DbfDriver::name() const {
    return QStringLiteral("MSDASQL.1");
}

void DbfDriver::open(const ConnectionProperties& properties, const QString&, const QString&) {
    const QString sourceType = properties.value(QStringLiteral("SourceType")).trimmed();
    if (sourceType.compare(QStringLiteral("DBF"), Qt::CaseInsensitive) != 0)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The FoxPro table driver opens a folder of tables only: the "
                                   "connection text needs \"SourceType=DBF\"."));
    const QString folder = properties.value(QStringLiteral("SourceDB")).trimmed();
    if (folder.isEmpty())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The connection text names no folder (\"SourceDB\")."));
    if (!QFileInfo(folder).isDir())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The folder '%1' does not exist.").arg(folder));
    d->folder = QFileInfo(folder).absoluteFilePath();
    d->open = true;
}

void DbfDriver::close() {
    if (!d->open)
        return;
    d->open = false;
    std::map<QString, OpenTable> tables = std::move(d->tables);
    d->tables.clear();
    // Every table is closed even when one fails; the first failure is reported.
    std::exception_ptr failure;
    for (auto& [name, table] : tables) {
        try {
            table.file->close();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
}

bool DbfDriver::isOpen() const {
    return d->open;
}

QString DbfDriver::folder() const {
    return d->folder;
}

qint64 DbfDriver::execute(const QString& sql) {
    d->requireOpen();
    if (!dbf::CreateTableStatement::looksLikeOne(sql))
        throw notSupported(QStringLiteral("this statement (only CREATE TABLE): %1").arg(sql));
    dbf::CreateTableStatement statement = dbf::CreateTableStatement::parse(sql);
    const QString path = d->pathOf(statement.table);
    if (QFileInfo::exists(path))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("File '%1' already exists.").arg(QFileInfo(path).fileName()));
    OpenTable entry;
    entry.file = dbf::DbfTableFile::create(path, statement.layout);
    d->tables[statement.table.toLower()] = std::move(entry);
    return -1;
}

std::unique_ptr<RowStore> DbfDriver::select(const QString& sql) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*select\s+\*\s+from\s+(\[[^\]]+\]|[^\s;]+)\s*;?\s*$)"),
        QRegularExpression::CaseInsensitiveOption);
    const auto match = pattern.match(sql);
    if (!match.hasMatch())
        throw notSupported(
            QStringLiteral("this query (only \"select * from <table>\"): %1").arg(sql));
    return selectTable(match.captured(1));
}

std::unique_ptr<RowStore> DbfDriver::selectTable(const QString& table) {
    OpenTable& entry = d->table(table);
    return entry.file->readAll(d->checkedName(table));
}

void DbfDriver::beginTransaction() {
    throw notSupported(QStringLiteral("transactions"));
}

void DbfDriver::commitTransaction() {
    throw notSupported(QStringLiteral("transactions"));
}

void DbfDriver::rollbackTransaction() {
    throw notSupported(QStringLiteral("transactions"));
}

int DbfDriver::transactionLevel() const {
    return 0;
}

QList<TableEntry> DbfDriver::tables() {
    d->requireOpen();
    QList<TableEntry> entries;
    const QDir dir(d->folder);
    for (const QFileInfo& info : dir.entryInfoList(QDir::Files, QDir::Name)) {
        if (info.fileName().endsWith(tableSuffix, Qt::CaseInsensitive))
            entries << TableEntry{info.completeBaseName(), QStringLiteral("TABLE")};
    }
    return entries;
}

QList<ProviderTypeEntry> DbfDriver::providerTypes() {
    d->requireOpen();
    auto entry = [](const char* name, DataType type, qint64 size, const char* prefix,
                    const char* suffix) {
        ProviderTypeEntry e;
        e.typeName = QString::fromLatin1(name);
        e.dataType = type;
        e.columnSize = size;
        e.literalPrefix = QString::fromLatin1(prefix);
        e.literalSuffix = QString::fromLatin1(suffix);
        e.bestMatch = true;
        return e;
    };
    return {entry("CHAR", DataType::WChar, 254, "'", "'"),
            entry("NUMERIC", DataType::Numeric, 20, "", ""),
            entry("DATE", DataType::Date, 8, "{^", "}"),
            entry("BOOL", DataType::Boolean, 1, "", ""),
            entry("MEMO", DataType::LongVarWChar, std::numeric_limits<qint32>::max(), "'", "'")};
}

namespace {

// The table's field of each column; throws ColumnNotFound naming the first that has none.
QList<int> fieldsOf(const OpenTable& entry, const QString& table, const QStringList& columns) {
    QList<int> fields;
    for (const QString& column : columns) {
        const int index = entry.file->layout().indexOf(column);
        if (index < 0)
            throw Error(ErrorNumber::ColumnNotFound,
                        QStringLiteral("Table '%1' has no field %2.").arg(table, column));
        fields << index;
    }
    return fields;
}

} // namespace

QVariant DbfDriver::insertRow(const QString& table, const QStringList& columns,
                              const QVariantList& values, const QString&) {
    OpenTable& entry = d->table(table);
    if (columns != entry.lastColumns) {
        entry.lastFields = fieldsOf(entry, table, columns);
        entry.lastColumns = columns;
    }
    entry.file->append(entry.lastFields, std::span(values.constData(), size_t(values.size())));
    return {};
}

std::unique_ptr<RowAppender> DbfDriver::appendRows(const QString& table,
                                                   const QStringList& columns) {
    OpenTable& entry = d->table(table);
    return std::make_unique<dbf::DbfRowAppender>(entry.file, fieldsOf(entry, table, columns));
}

qint64 DbfDriver::updateRow(const QString&, const QStringList&, const QVariantList&,
                            const QStringList&, const QVariantList&, const QStringList&,
                            const QVariantList&) {
    throw notSupported(QStringLiteral("changing records (it only appends them)"));
}

qint64 DbfDriver::deleteRow(const QString&, const QStringList&, const QVariantList&,
                            const QStringList&, const QVariantList&) {
    throw notSupported(QStringLiteral("deleting records (it only appends them)"));
}

} // namespace vx
