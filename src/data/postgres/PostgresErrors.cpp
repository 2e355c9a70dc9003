#include "data/postgres/PostgresErrors.h"

#include "data/dialect/SqlLexer.h"

namespace vx::postgres {

namespace {

const QString errorSource = QStringLiteral("PostgreSQL");
const QString missingTableStart =
    QStringLiteral("The database engine cannot find the input table or query '");
const QString missingTableEnd =
    QStringLiteral("'. Make sure it exists and that its name is spelled correctly.");

QString field(const PGresult* result, int code) {
    const char* text = result ? PQresultErrorField(result, code) : nullptr;
    return text ? QString::fromUtf8(text) : QString();
}

// The relation named in "relation "x" does not exist" (the text may be translated, the quotes
// are not).
QString quotedName(const QString& message) {
    const qsizetype open = message.indexOf(u'"');
    const qsizetype close = open < 0 ? -1 : message.indexOf(u'"', open + 1);
    return close > open ? message.mid(open + 1, close - open - 1) : QString();
}

} // namespace

Error tableNotFound(const QString& table) {
    return Error(ErrorNumber::TableNotFound, missingTableStart + table + missingTableEnd,
                 errorSource);
}

Error spelledAsWritten(const Error& error, const QString& sql) {
    const QString& description = error.description();
    if (error.number() != ErrorNumber::TableNotFound ||
        !description.startsWith(missingTableStart) || !description.endsWith(missingTableEnd))
        return error;
    const QString folded =
        description.mid(missingTableStart.size(),
                        description.size() - missingTableStart.size() - missingTableEnd.size());
    for (const auto& token : dialect::tokenize(sql)) {
        if (token.isName() && token.name().compare(folded, Qt::CaseInsensitive) == 0)
            return tableNotFound(token.name());
    }
    return error;
}

Error errorFromResult(const PGresult* result, PGconn* connection) {
    const QString state = field(result, PG_DIAG_SQLSTATE);
    QString message = field(result, PG_DIAG_MESSAGE_PRIMARY);
    if (message.isEmpty())
        message = QString::fromUtf8(result ? PQresultErrorMessage(result) : "").trimmed();
    if (message.isEmpty() && connection)
        message = QString::fromUtf8(PQerrorMessage(connection)).trimmed();
    if (message.isEmpty())
        message = QStringLiteral("The PostgreSQL server reported an unknown failure.");

    if (state == u"42P01")
        return tableNotFound(quotedName(message));
    if (state == u"42601")
        return Error(ErrorNumber::SyntaxError, message, errorSource);
    if (state == u"42703")
        return Error(ErrorNumber::ColumnNotFound, message, errorSource);
    if (state == u"40001")
        return Error(ErrorNumber::Unspecified, message, errorSource)
            .setConflict(Conflict::Serialization);
    if (state == u"40P01")
        return Error(ErrorNumber::Unspecified, message, errorSource)
            .setConflict(Conflict::Deadlock);
    if (state == u"55P03")
        return Error(ErrorNumber::Unspecified, message, errorSource).setConflict(Conflict::Busy);
    if (state == u"23505")
        return Error(ErrorNumber::IntegrityViolation, message, errorSource)
            .setConflict(Conflict::UniqueViolation);
    if (state.startsWith(u"23"))
        return Error(ErrorNumber::IntegrityViolation, message, errorSource);
    if (state == u"22003")
        return Error(ErrorNumber::Overflow, message, errorSource);
    // Text too long for its column, or a value the column's type cannot take.
    if (state == u"22001" || state == u"22P02" || state == u"22007" || state == u"22008")
        return Error(ErrorNumber::ValueDoesNotFit, message, errorSource);
    return Error(ErrorNumber::Unspecified, message, errorSource);
}

Error connectionError(PGconn* connection, const QString& doing) {
    const QString detail = connection ? QString::fromUtf8(PQerrorMessage(connection)).trimmed()
                                      : QStringLiteral("out of memory");
    return Error(ErrorNumber::Unspecified, QStringLiteral("%1: %2").arg(doing, detail),
                 errorSource);
}

} // namespace vx::postgres
