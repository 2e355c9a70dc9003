#include "data/sqlite/SqliteDriver.h"

#include "data/MaterialisedResultStream.h"
#include "data/dialect/SqlLexer.h"
#include "data/dialect/SqliteDialect.h"
#include "data/sqlite/SqliteBusyWait.h"
#include "data/sqlite/SqliteParameters.h"
#include "data/sqlite/SqliteResultReader.h"
#include "data/sqlite/SqliteResultStream.h"
#include "data/sqlite/SqliteStatementCache.h"
#include "data/sqlite/SqliteSupport.h"
#include "data/sqlite/SqliteTableKeys.h"
#include "data/sqlite/SqliteWriterGate.h"

#include <QFileInfo>
#include <QUrl>
#include <array>
#include <optional>

namespace vx {

using namespace sqlite;
using dialect::quoteName;

namespace {

constexpr int defaultBusyTimeoutMs = 10000;
const QString mainDatabase = QStringLiteral("main");

bool isTrueText(const QString& text) {
    const QString value = text.trimmed().toLower();
    return value == u"true" || value == u"yes" || value == u"1" || value == u"-1";
}

// "[KTItem]" and "\"KTItem\"" name the same table as "KTItem".
QString plainTableName(const QString& table) {
    const auto tokens = dialect::tokenize(table.trimmed());
    return tokens.size() == 1 && tokens.front().isName() ? tokens.front().name() : table.trimmed();
}

QString firstWord(const char* sql) {
    const auto tokens = dialect::tokenize(QString::fromUtf8(sql).left(64));
    for (const auto& token : tokens) {
        if (token.isSignificant())
            return token.text.toUpper();
    }
    return {};
}

bool sameColumns(const QStringList& a, const QStringList& b) {
    if (a.size() != b.size())
        return false;
    for (const QString& column : a) {
        if (!b.contains(column, Qt::CaseInsensitive))
            return false;
    }
    return true;
}

qint64 stepToEnd(sqlite3* db, sqlite3_stmt* statement) {
    int code;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
    }
    if (code != SQLITE_DONE)
        fail(db, code);
    return sqlite3_changes64(db);
}

// The condition that finds one row by its original values; a null matches null.
struct RowMatch {
    QString condition;
    QVariantList parameters;
};

RowMatch matchRow(const QStringList& columns, const QVariantList& values) {
    if (columns.isEmpty() || columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The row to change is not identified by its values."));
    RowMatch match;
    QStringList conditions;
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const QString column = quoteName(columns[i]);
        const QVariant& value = values[i];
        if (value.isNull()) {
            conditions << column + QStringLiteral(" IS NULL");
        } else if (SqliteParameters::isDate(value)) {
            // Dates may be stored with or without their time part.
            conditions << QStringLiteral("datetime(%1) = datetime(?)").arg(column);
            match.parameters << value;
        } else {
            // Text compares exactly: the column's case-blind collation could take another row.
            conditions << column + (value.typeId() == QMetaType::QString
                                        ? QStringLiteral(" = ? COLLATE BINARY")
                                        : QStringLiteral(" = ?"));
            match.parameters << value;
        }
    }
    match.condition = conditions.join(QStringLiteral(" AND "));
    return match;
}

// Adds the columns that must still hold what was read. Text compares exactly, whatever the
// column's collation: another user's change of letter case is a change.
void addChecks(RowMatch& match, const QStringList& columns, const QVariantList& values) {
    if (columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column checked needs one value."));
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const QString column = quoteName(columns[i]);
        const QVariant& value = values[i];
        if (value.isNull()) {
            match.condition += QStringLiteral(" AND %1 IS NULL").arg(column);
            continue;
        }
        if (SqliteParameters::isDate(value))
            match.condition += QStringLiteral(" AND datetime(%1) = datetime(?)").arg(column);
        else
            match.condition += QStringLiteral(" AND %1 = ? COLLATE BINARY").arg(column);
        match.parameters << value;
    }
}

} // namespace

struct SqliteDriver::Private {
    BusyWait busyWait; // outlives db, which calls it
    int busyTimeoutMs = 0;
    WriterGate gate;
    DatabaseHandle db;
    SqliteStatementCache statements;
    std::optional<SqliteTableKeys> keys;
    SqliteDialect dialect;
    int transactionDepth = 0;

    // The statements of the last few inserts, found again without composing their text: bulk
    // loads insert row after row into a few tables (an item, its group row, its file) with one
    // column list each.
    struct InsertShape {
        QString table;
        QStringList columns;
        QString autoIncrementColumn;
        sqlite3_stmt* statement = nullptr;
        quint64 generation = 0;
    };
    std::array<InsertShape, 4> recentInserts;
    size_t nextInsertSlot = 0;

    sqlite3* handle() const {
        if (!db)
            throw Error(ErrorNumber::ObjectClosed,
                        QStringLiteral("Operation is not allowed when the object is closed."));
        return db.get();
    }

    // Statements the driver composes itself, run through the cache.
    qint64 runCached(const QString& sql, const QVariantList& parameters,
                     QVariant* returned = nullptr) {
        return runStatement(statements.get(sql), parameters, returned);
    }

    qint64 runStatement(sqlite3_stmt* statement, const QVariantList& parameters,
                        QVariant* returned) {
        sqlite3* database = handle();
        SqliteParameters binder(database, statement);
        ResetOnExit reset(statement);
        for (qsizetype i = 0; i < parameters.size(); ++i)
            binder.bind(int(i + 1), parameters[i]);
        if (!returned)
            return stepToEnd(database, statement);
        int code = sqlite3_step(statement);
        if (code == SQLITE_ROW) {
            const qint64 value = sqlite3_column_int64(statement, 0);
            *returned = sqlite3_column_type(statement, 0) == SQLITE_NULL ? QVariant()
                        : value == qint32(value)                         ? QVariant(int(value))
                                                 : QVariant::fromValue(value);
        }
        return stepToEnd(database, statement);
    }

    // The WHERE clause for a write to one row of `table`.
    QString whereOneRow(const QString& table, const QStringList& keyColumns,
                        const RowMatch& match) {
        const TableKey& key = keys->of(mainDatabase, table);
        if (key.primaryKey && sameColumns(key.columns, keyColumns))
            return QStringLiteral(" WHERE ") + match.condition;
        // Without a key the values may repeat: change only the first row that has them.
        return QStringLiteral(" WHERE rowid = (SELECT rowid FROM %1 WHERE %2 LIMIT 1)")
            .arg(quoteName(table), match.condition);
    }

    void runTransactionStatement(const QString& sql) {
        try {
            run(handle(), sql.toUtf8().constData());
        } catch (...) {
            leaveGateAfterTransaction();
            throw;
        }
        leaveGateAfterTransaction();
    }
    // The gate is held exactly while the engine's transaction is open.
    void leaveGateAfterTransaction() {
        if (gate.entered() && (!db || sqlite3_get_autocommit(db.get())))
            gate.leave();
    }
};

SqliteDriver::SqliteDriver()
    : d(std::make_unique<Private>()) {}

SqliteDriver::~SqliteDriver() {
    close();
}

QString SqliteDriver::name() const {
    return QStringLiteral("SQLite");
}

void SqliteDriver::open(const ConnectionProperties& properties, const QString&, const QString&) {
    close();
    const QString path = properties.value(QStringLiteral("Data Source")).trimmed();
    if (path.isEmpty())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The connection settings name no database file "
                                   "(\"Data Source\" is missing or empty)."));
    const bool create = isTrueText(properties.value(QStringLiteral("Create If Missing")));
    const bool readOnly =
        properties.value(QStringLiteral("Mode")).trimmed().compare(u"Read", Qt::CaseInsensitive) ==
        0;
    // A file nobody changes while it is open (an export on a CD): no locks, no journal files
    // beside it, so reading leaves its folder exactly as it was.
    const bool immutable = readOnly && isTrueText(properties.value(QStringLiteral("Immutable")));
    if (!create && path != u":memory:" && !QFileInfo(path).isFile())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Could not find file '%1'.").arg(path));

    int flags = SQLITE_OPEN_NOMUTEX | (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    if (create && !readOnly)
        flags |= SQLITE_OPEN_CREATE;
    QByteArray target = path.toUtf8();
    if (immutable && path != u":memory:") {
        flags |= SQLITE_OPEN_URI;
        target = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded() +
                 QByteArrayLiteral("?immutable=1");
    }
    sqlite3* raw = nullptr;
    const int code = sqlite3_open_v2(target.constData(), &raw, flags, nullptr);
    DatabaseHandle db(raw);
    if (code != SQLITE_OK) {
        const Error error = errorFrom(raw, code);
        throw Error(
            error.number(),
            QStringLiteral("Cannot open the database file '%1': %2").arg(path, error.description()),
            error.source());
    }
    sqlite3_extended_result_codes(raw, 1);
    bool timeoutGiven = false;
    const int timeout = properties.value(QStringLiteral("Busy Timeout")).toInt(&timeoutGiven);
    d->busyTimeoutMs = timeoutGiven ? timeout : defaultBusyTimeoutMs;
    d->busyWait.install(raw, d->busyTimeoutMs);
    // Set before the journal mode, whose switch is the first write to a new file.
    const QString synchronous = properties.value(QStringLiteral("Synchronous")).trimmed().toUpper();
    if (!synchronous.isEmpty()) {
        static const QStringList levels{QStringLiteral("OFF"), QStringLiteral("NORMAL"),
                                        QStringLiteral("FULL"), QStringLiteral("EXTRA")};
        if (!levels.contains(synchronous))
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("\"Synchronous\" is %1; it takes Off, Normal, Full or "
                                       "Extra.")
                            .arg(properties.value(QStringLiteral("Synchronous")).trimmed()));
        run(raw, (QStringLiteral("PRAGMA synchronous=") + synchronous).toUtf8().constData());
    }
    // Readers never block the writer. A read-only file stays in its own mode.
    if (!readOnly)
        sqlite3_exec(raw, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    // Checks now that the file really is a database, rather than at the first query.
    run(raw, "SELECT count(*) FROM sqlite_master");
    // ANALYZE samples a bounded number of rows per index, so it stays quick at any size.
    run(raw, "PRAGMA analysis_limit=1000");

    d->db = std::move(db);
    if (!readOnly && path != u":memory:")
        d->gate.open(path);
    d->statements.attach(d->db.get());
    d->keys.emplace(d->db.get());
    d->transactionDepth = 0;
}

void SqliteDriver::close() {
    d->statements.clear();
    d->keys.reset();
    d->db.reset(); // an open transaction is rolled back by the engine
    d->gate.close();
    d->transactionDepth = 0;
}

bool SqliteDriver::isOpen() const {
    return d->db != nullptr;
}

qint64 SqliteDriver::execute(const QString& sql) {
    sqlite3* db = d->handle();
    const QByteArray text = d->dialect.rewrite(sql).toUtf8();
    const char* next = text.constData();
    const char* const end = next + text.size();
    qint64 affected = -1;
    while (next < end) {
        const char* tail = nullptr;
        StatementHandle statement =
            prepare(db, QByteArray::fromRawData(next, end - next), 0, &tail);
        next = tail;
        if (!statement)
            break; // only blanks or comments were left
        const QString kind = firstWord(sqlite3_sql(statement.get()));
        const qint64 changes = stepToEnd(db, statement.get());
        const bool changesRows =
            kind == u"INSERT" || kind == u"UPDATE" || kind == u"DELETE" || kind == u"REPLACE";
        affected = changesRows ? changes : -1;
        if (kind == u"CREATE" || kind == u"DROP" || kind == u"ALTER")
            d->keys->clear();
    }
    return affected;
}

std::unique_ptr<RowStore> SqliteDriver::select(const QString& sql) {
    sqlite3* db = d->handle();
    const QByteArray text = d->dialect.rewrite(sql).toUtf8();
    const char* tail = nullptr;
    StatementHandle statement = prepare(db, text, 0, &tail);
    if (!statement)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Command text was not set for the command object."));
    for (const auto& token : dialect::tokenize(QString::fromUtf8(tail))) {
        if (token.isSignificant() && !token.isSymbol(u";"))
            throw Error(ErrorNumber::SyntaxError,
                        QStringLiteral("Characters found after end of SQL statement."));
    }
    return readResult(db, statement.get(), sql, *d->keys);
}

std::unique_ptr<ResultStream> SqliteDriver::openStream(const QString& sql) {
    return std::make_unique<SqliteResultStream>(
        d->handle(), sql, [this](const QString& text) { return d->dialect.rewrite(text); },
        *d->keys);
}

std::unique_ptr<RowStore> SqliteDriver::selectTable(const QString& table) {
    sqlite3* db = d->handle();
    const QString name = quoteName(plainTableName(table));
    qsizetype count = 0;
    {
        // Counting first lets the rows be laid out once, in place.
        auto counting = prepare(db, QStringLiteral("SELECT count(*) FROM %1").arg(name).toUtf8());
        if (sqlite3_step(counting.get()) == SQLITE_ROW)
            count = qsizetype(sqlite3_column_int64(counting.get(), 0));
    }
    const QString sql = QStringLiteral("SELECT * FROM %1").arg(name);
    StatementHandle statement = prepare(db, sql.toUtf8());
    return readResult(db, statement.get(), sql, *d->keys, count);
}

std::unique_ptr<RowStore> SqliteDriver::tableStructure(const QString& table) {
    sqlite3* db = d->handle();
    const QString sql = QStringLiteral("SELECT * FROM %1").arg(quoteName(plainTableName(table)));
    // Prepared, never stepped: the declared types are all that is read.
    StatementHandle statement = prepare(db, sql.toUtf8());
    bool allTyped = true;
    ColumnList columns = describeResult(statement.get(), sql, *d->keys, allTyped);
    // A column without a declared type takes its type from the rows, as a full read would.
    if (!allTyped)
        return emptyLike(*selectTable(table));
    return std::make_unique<RowStore>(std::move(columns));
}

std::unique_ptr<ResultStream> SqliteDriver::streamTable(const QString& table) {
    sqlite3* db = d->handle();
    const QString sql = QStringLiteral("SELECT * FROM %1").arg(quoteName(plainTableName(table)));
    StatementHandle statement = prepare(db, sql.toUtf8());
    bool allTyped = true;
    describeResult(statement.get(), sql, *d->keys, allTyped);
    if (!allTyped) // columns without a declared type are typed from the rows, all read first
        return std::make_unique<MaterialisedResultStream>(selectTable(table));
    return std::make_unique<SqliteResultStream>(db, sql, nullptr, *d->keys);
}

void SqliteDriver::beginTransaction() {
    const int depth = d->transactionDepth;
    if (depth == 0) {
        d->handle();
        d->gate.enter(d->busyTimeoutMs);
    }
    // IMMEDIATE takes the write lock now, waiting for another writer, so that a transaction
    // never fails half-way for want of it.
    d->runTransactionStatement(depth == 0 ? QStringLiteral("BEGIN IMMEDIATE")
                                          : QStringLiteral("SAVEPOINT vx_level_%1").arg(depth));
    if (depth == 0)
        d->gate.engineLockTaken();
    d->transactionDepth = depth + 1;
}

void SqliteDriver::commitTransaction() {
    sqlite3* db = d->handle();
    if (d->transactionDepth == 0)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("No transaction is active."));
    if (sqlite3_get_autocommit(db)) {
        d->transactionDepth = 0;
        d->leaveGateAfterTransaction();
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The transaction was already rolled back after an error."));
    }
    const int depth = d->transactionDepth - 1;
    d->runTransactionStatement(depth == 0 ? QStringLiteral("COMMIT")
                                          : QStringLiteral("RELEASE vx_level_%1").arg(depth));
    d->transactionDepth = depth;
}

void SqliteDriver::rollbackTransaction() {
    sqlite3* db = d->handle();
    if (d->transactionDepth == 0)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("No transaction is active."));
    if (sqlite3_get_autocommit(db)) { // the engine already rolled it back after a failure
        d->transactionDepth = 0;
        d->leaveGateAfterTransaction();
        return;
    }
    const int depth = d->transactionDepth - 1;
    d->transactionDepth = depth;
    d->runTransactionStatement(
        depth == 0 ? QStringLiteral("ROLLBACK")
                   : QStringLiteral("ROLLBACK TO vx_level_%1; RELEASE vx_level_%1").arg(depth));
}

int SqliteDriver::transactionLevel() const {
    // The engine ends a transaction by itself after some failures (a full disk, an interrupt).
    if (d->db && d->transactionDepth > 0 && sqlite3_get_autocommit(d->db.get())) {
        d->transactionDepth = 0;
        d->leaveGateAfterTransaction();
    }
    return d->transactionDepth;
}

QList<TableEntry> SqliteDriver::tables() {
    sqlite3* db = d->handle();
    auto statement = prepare(db, "SELECT name, type FROM sqlite_master WHERE type IN "
                                 "('table', 'view') ORDER BY name COLLATE NOCASE");
    QList<TableEntry> result;
    int code;
    while ((code = sqlite3_step(statement.get())) == SQLITE_ROW) {
        TableEntry entry;
        entry.name = QString::fromUtf8(
            reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)));
        const bool view =
            qstrcmp(reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 1)),
                    "view") == 0;
        // The engine keeps its own tables under the reserved "sqlite_" prefix.
        if (view)
            entry.type = QStringLiteral("VIEW");
        else if (entry.name.startsWith(QStringLiteral("sqlite_"), Qt::CaseInsensitive))
            entry.type = QStringLiteral("SYSTEM TABLE");
        else
            entry.type = QStringLiteral("TABLE");
        result << entry;
    }
    if (code != SQLITE_DONE)
        fail(db, code);
    return result;
}

QStringList SqliteDriver::indexNames() {
    sqlite3* db = d->handle();
    auto statement = prepare(db, "SELECT name FROM sqlite_master WHERE type = 'index'");
    QStringList names;
    int code;
    while ((code = sqlite3_step(statement.get())) == SQLITE_ROW)
        names << QString::fromUtf8(
            reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)));
    if (code != SQLITE_DONE)
        fail(db, code);
    return names;
}

QList<ProviderTypeEntry> SqliteDriver::providerTypes() {
    d->handle();
    const QString quote = QStringLiteral("'");
    const QString hash = QStringLiteral("#");
    // The Jet type names the repository declares, which is how this engine reports types back.
    return {
        {QStringLiteral("SHORT"), DataType::SmallInt, 5, {}, {}, true},
        {QStringLiteral("LONG"), DataType::Integer, 10, {}, {}, true},
        {QStringLiteral("COUNTER"), DataType::Integer, 10, {}, {}, false},
        {QStringLiteral("BYTE"), DataType::UnsignedTinyInt, 3, {}, {}, true},
        {QStringLiteral("BIGINT"), DataType::BigInt, 19, {}, {}, true},
        {QStringLiteral("SINGLE"), DataType::Single, 7, {}, {}, true},
        {QStringLiteral("DOUBLE"), DataType::Double, 15, {}, {}, true},
        {QStringLiteral("CURRENCY"), DataType::Currency, 19, {}, {}, true},
        {QStringLiteral("DECIMAL"), DataType::Numeric, 28, {}, {}, true},
        {QStringLiteral("BIT"), DataType::Boolean, 2, {}, {}, true},
        {QStringLiteral("DATETIME"), DataType::Date, 19, hash, hash, true},
        {QStringLiteral("TIMESTAMP"), DataType::DBTimeStamp, 19, hash, hash, true},
        {QStringLiteral("CHAR"), DataType::WChar, 255, quote, quote, true},
        {QStringLiteral("VARCHAR"), DataType::VarWChar, 255, quote, quote, true},
        {QStringLiteral("LONGTEXT"), DataType::LongVarWChar, 536870910, quote, quote, true},
    };
}

QVariant SqliteDriver::insertRow(const QString& table, const QStringList& columns,
                                 const QVariantList& values, const QString& autoIncrementColumn) {
    if (columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column written needs one value."));
    d->handle();
    Private::InsertShape* shape = nullptr;
    for (Private::InsertShape& recent : d->recentInserts) {
        if (recent.statement && recent.generation == d->statements.generation() &&
            recent.table == table && recent.columns == columns &&
            recent.autoIncrementColumn == autoIncrementColumn) {
            shape = &recent;
            break;
        }
    }
    if (!shape) {
        QString sql = QStringLiteral("INSERT INTO ") + quoteName(table);
        if (columns.isEmpty()) {
            sql += QStringLiteral(" DEFAULT VALUES");
        } else {
            sql += QStringLiteral(" (");
            QString placeholders;
            for (qsizetype i = 0; i < columns.size(); ++i) {
                sql += (i ? QStringLiteral(", ") : QString()) + quoteName(columns[i]);
                placeholders += i ? QStringLiteral(", ?") : QStringLiteral("?");
            }
            sql += QStringLiteral(") VALUES (") + placeholders + u')';
        }
        if (!autoIncrementColumn.isEmpty())
            sql += QStringLiteral(" RETURNING ") + quoteName(autoIncrementColumn);
        shape = &d->recentInserts[d->nextInsertSlot];
        d->nextInsertSlot = (d->nextInsertSlot + 1) % d->recentInserts.size();
        shape->statement = nullptr; // stays unset if preparing fails
        sqlite3_stmt* statement = d->statements.get(sql);
        *shape = {table, columns, autoIncrementColumn, statement, d->statements.generation()};
    }
    QVariant generated;
    d->runStatement(shape->statement, values, autoIncrementColumn.isEmpty() ? nullptr : &generated);
    return generated;
}

qint64 SqliteDriver::updateRow(const QString& table, const QStringList& columns,
                               const QVariantList& values, const QStringList& keyColumns,
                               const QVariantList& keyValues, const QStringList& checkColumns,
                               const QVariantList& checkValues) {
    if (columns.isEmpty())
        return 0;
    if (columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column written needs one value."));
    RowMatch match = matchRow(keyColumns, keyValues);
    addChecks(match, checkColumns, checkValues);
    QString sql = QStringLiteral("UPDATE ") + quoteName(table) + QStringLiteral(" SET ");
    for (qsizetype i = 0; i < columns.size(); ++i)
        sql +=
            (i ? QStringLiteral(", ") : QString()) + quoteName(columns[i]) + QStringLiteral(" = ?");
    sql += d->whereOneRow(table, keyColumns, match);
    return d->runCached(sql, values + match.parameters);
}

qint64 SqliteDriver::deleteRow(const QString& table, const QStringList& keyColumns,
                               const QVariantList& keyValues, const QStringList& checkColumns,
                               const QVariantList& checkValues) {
    RowMatch match = matchRow(keyColumns, keyValues);
    addChecks(match, checkColumns, checkValues);
    const QString sql = QStringLiteral("DELETE FROM ") + quoteName(table) +
                        d->whereOneRow(table, keyColumns, match);
    return d->runCached(sql, match.parameters);
}

} // namespace vx
