#include "data/sqlite/SqliteSupport.h"

#include "data/SqlLog.h"

namespace vx::sqlite {

namespace {

const QString errorSource = QStringLiteral("SQLite");

QString missingTableName(const QString& message) {
    QString name = message.mid(message.indexOf(u':') + 1).trimmed();
    if (name.startsWith(QStringLiteral("main."), Qt::CaseInsensitive))
        name = name.mid(5);
    return name;
}

} // namespace

Error errorFrom(sqlite3* db, int code) {
    const QString message =
        db ? QString::fromUtf8(sqlite3_errmsg(db)) : QString::fromUtf8(sqlite3_errstr(code));
    const int primary = code & 0xff;
    if (message.startsWith(QStringLiteral("no such table:")))
        return Error(ErrorNumber::TableNotFound,
                     QStringLiteral("The database engine cannot find the input table or query "
                                    "'%1'. Make sure it exists and that its name is spelled "
                                    "correctly.")
                         .arg(missingTableName(message)),
                     errorSource);
    if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED)
        return Error(ErrorNumber::Unspecified, message, errorSource).setConflict(Conflict::Busy);
    if (code == SQLITE_CONSTRAINT_PRIMARYKEY || code == SQLITE_CONSTRAINT_UNIQUE)
        return Error(ErrorNumber::IntegrityViolation, message, errorSource)
            .setConflict(Conflict::UniqueViolation);
    if (primary == SQLITE_CONSTRAINT)
        return Error(ErrorNumber::IntegrityViolation, message, errorSource);
    if (message.contains(QStringLiteral("syntax error")) ||
        message.startsWith(QStringLiteral("incomplete input")) ||
        message.startsWith(QStringLiteral("unrecognized token")))
        return Error(ErrorNumber::SyntaxError, message, errorSource);
    if (message.startsWith(QStringLiteral("no such column:")))
        return Error(ErrorNumber::ColumnNotFound, message, errorSource);
    return Error(ErrorNumber::Unspecified, message, errorSource);
}

void fail(sqlite3* db, int code) {
    throw errorFrom(db, code);
}

StatementHandle prepare(sqlite3* db, const QByteArray& sql, unsigned flags, const char** tail) {
    sqlite3_stmt* raw = nullptr;
    const int code = sqlite3_prepare_v3(db, sql.constData(), int(sql.size()), flags, &raw, tail);
    StatementHandle statement(raw);
    if (code != SQLITE_OK)
        fail(db, code);
    if (raw) // the statement alone, without what follows it in a batch
        qCDebug(lcSql).noquote() << "sqlite:" << QString::fromUtf8(sqlite3_sql(raw));
    return statement;
}

void run(sqlite3* db, const char* sql) {
    qCDebug(lcSql).noquote() << "sqlite:" << sql;
    const int code = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        fail(db, code);
}

} // namespace vx::sqlite
