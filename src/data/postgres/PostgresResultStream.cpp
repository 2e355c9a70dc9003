#include "data/postgres/PostgresResultStream.h"

#include "data/Error.h"
#include "data/SqlLog.h"
#include "data/dialect/LeadingOrder.h"
#include "data/postgres/PostgresErrors.h"
#include "data/postgres/PostgresResultReader.h"
#include "data/postgres/PostgresSession.h"

#include <algorithm>

namespace vx::postgres {

namespace {

// Types the server orders as the record set does. Booleans are left out: the server puts false
// first, the record set Yes (-1) first. Text is left out for its collations.
bool serverOrders(Oid type) {
    switch (type) {
    case TypeOid::Int2:
    case TypeOid::Int4:
    case TypeOid::Int8:
    case TypeOid::Float4:
    case TypeOid::Float8:
    case TypeOid::Numeric:
    case TypeOid::Date:
    case TypeOid::Timestamp:
        return true;
    default:
        return false;
    }
}

ResultHandle describeStatement(PGconn* connection, const QByteArray& statement,
                               const QString& spelled) {
    qCDebug(lcSql).noquote() << "postgres:" << QString::fromUtf8(statement);
    ResultHandle prepared(PQprepare(connection, "", statement.constData(), 0, nullptr));
    if (!prepared)
        throw connectionError(connection, QStringLiteral("The statement could not be sent"));
    if (PQresultStatus(prepared.get()) != PGRES_COMMAND_OK)
        throw spelledAsWritten(errorFromResult(prepared.get(), connection), spelled);
    ResultHandle described(PQdescribePrepared(connection, ""));
    if (!described)
        throw connectionError(connection, QStringLiteral("The statement could not be sent"));
    if (PQresultStatus(described.get()) != PGRES_COMMAND_OK)
        throw spelledAsWritten(errorFromResult(described.get(), connection), spelled);
    return described;
}

} // namespace

struct PostgresResultStream::Private {
    PGconn* connection = nullptr;
    Session* session = nullptr; // held streams only
    QString sql;
    std::function<QByteArray(const QString&)> rewrite;
    QByteArray statement;
    QByteArray cursor = "vx_rows";
    std::unique_ptr<ResultDecoder> decoder;
    bool started = false;
    bool ended = false;
    bool inTransaction = false;
    bool cursorOpen = false;

    // The piece being handed out, and the FETCH already sent for the next one.
    ResultHandle piece;
    int pieceNext = 0;
    qsizetype pieceAsked = 0;
    qsizetype pending = 0; // rows asked for by a FETCH whose result is not read yet

    ResultHandle exec(const QByteArray& text, ExecStatusType wanted) {
        ResultHandle result(PQexec(connection, text.constData()));
        if (!result)
            throw connectionError(connection, QStringLiteral("The statement could not be sent"));
        if (PQresultStatus(result.get()) != wanted)
            throw spelledAsWritten(errorFromResult(result.get(), connection), sql);
        return result;
    }
    QByteArray fetchStatement(qsizetype rows) const {
        return "FETCH FORWARD " + QByteArray::number(rows) + " FROM " + cursor;
    }
    void send(qsizetype rows) {
        if (!PQsendQuery(connection, fetchStatement(rows).constData()))
            throw connectionError(connection, QStringLiteral("The statement could not be sent"));
        pending = rows;
    }
    // The result of the FETCH sent last.
    ResultHandle receive() {
        ResultHandle result(PQgetResult(connection));
        // The end of the command's results follows the result itself.
        while (ResultHandle rest{PQgetResult(connection)}) {
        }
        pieceAsked = std::exchange(pending, 0);
        if (!result)
            throw connectionError(connection, QStringLiteral("The statement could not be sent"));
        if (PQresultStatus(result.get()) != PGRES_TUPLES_OK)
            throw spelledAsWritten(errorFromResult(result.get(), connection), sql);
        return result;
    }
    void drain() noexcept {
        if (pending == 0)
            return;
        pending = 0;
        while (ResultHandle rest{PQgetResult(connection)}) {
        }
    }
    void finish() noexcept {
        piece.reset();
        if (session) {
            if (!cursorOpen)
                return;
            cursorOpen = false;
            try {
                if (session->isOpen())
                    session->run("CLOSE " + cursor);
            } catch (const Error&) {
                // The session was reset or the transaction holding the cursor was rolled back:
                // the cursor is gone with it.
            }
            return;
        }
        drain();
        if (!inTransaction)
            return;
        inTransaction = false;
        // Ends the cursor with the transaction; a failed transaction rolls back the same way.
        ResultHandle done(PQexec(connection, "ROLLBACK"));
    }
    void start() {
        started = true;
        if (session) {
            session->run("DECLARE " + cursor + " NO SCROLL CURSOR WITH HOLD FOR " + statement);
            cursorOpen = true;
            return;
        }
        exec("BEGIN READ ONLY", PGRES_COMMAND_OK);
        inTransaction = true;
        const QByteArray format = decoder->readsBinary() ? " BINARY" : "";
        exec("DECLARE " + cursor + format + " NO SCROLL CURSOR FOR " + statement, PGRES_COMMAND_OK);
    }
    // The next piece's result, `wanted` rows asked for when none is on its way.
    void nextPiece(qsizetype wanted) {
        if (session) {
            piece = session->run(fetchStatement(wanted));
            pieceAsked = wanted;
        } else {
            if (pending == 0)
                send(wanted);
            piece = receive();
        }
        pieceNext = 0;
        if (PQntuples(piece.get()) < pieceAsked) {
            ended = true;
        } else if (!session) {
            // The server reads on while this piece is decoded.
            send(std::max(pieceAsked, wanted));
        }
    }
};

PostgresResultStream::PostgresResultStream(PGconn* connection, Catalog& catalog, const QString& sql,
                                           std::function<QByteArray(const QString&)> rewrite)
    : d(std::make_unique<Private>()) {
    d->connection = connection;
    d->sql = sql;
    d->rewrite = std::move(rewrite);
    d->statement = d->rewrite(sql);
    // The columns from the statement's description, before any row is produced.
    const ResultHandle described = describeStatement(connection, d->statement, sql);
    d->decoder = std::make_unique<ResultDecoder>(described.get(), catalog, sql, false);
}

PostgresResultStream::PostgresResultStream(Session& session, Catalog& catalog,
                                           const QByteArray& query, QByteArray cursorName)
    : d(std::make_unique<Private>()) {
    d->connection = session.connection();
    d->session = &session;
    d->sql = QString::fromUtf8(query);
    d->statement = query;
    d->cursor = std::move(cursorName);
    const ResultHandle described = describeStatement(d->connection, query, d->sql);
    d->decoder = std::make_unique<ResultDecoder>(described.get(), catalog, d->sql, false);
}

PostgresResultStream::~PostgresResultStream() {
    d->finish();
}

const ColumnList& PostgresResultStream::columns() const {
    return d->decoder->columns();
}

bool PostgresResultStream::orderBy(const std::vector<SortColumn>& columns) {
    if (d->started || columns.empty() || !d->rewrite)
        return false;
    const ColumnList& described = d->decoder->columns();
    for (const SortColumn& column : columns) {
        if (column.column < 0 || column.column >= described.size() ||
            !serverOrders(d->decoder->typeOf(column.column)))
            return false;
    }
    const QString ordered = dialect::withLeadingOrder(d->sql, dialect::orderTerms(columns));
    if (ordered.isEmpty())
        return false;
    d->statement = d->rewrite(ordered);
    return true;
}

qsizetype PostgresResultStream::fetch(RowStore& into, qsizetype maxRows) {
    const qsizetype wanted = qMax<qsizetype>(1, maxRows);
    qsizetype appended = 0;
    try {
        if (!d->started)
            d->start();
        while (appended < wanted) {
            if (!d->piece || d->pieceNext >= PQntuples(d->piece.get())) {
                d->piece.reset();
                if (d->ended)
                    break;
                d->nextPiece(wanted - appended);
            }
            const int count = int(
                std::min<qsizetype>(wanted - appended, PQntuples(d->piece.get()) - d->pieceNext));
            d->decoder->append(into, d->piece.get(), d->pieceNext, count);
            d->pieceNext += count;
            appended += count;
        }
        if (d->ended && (!d->piece || d->pieceNext >= PQntuples(d->piece.get())))
            d->finish();
    } catch (...) {
        d->ended = true;
        d->finish();
        throw;
    }
    return appended;
}

bool PostgresResultStream::atEnd() const {
    return d->ended && !d->piece;
}

} // namespace vx::postgres
