#include "data/postgres/PostgresResultStream.h"

#include "data/Error.h"
#include "data/dialect/LeadingOrder.h"
#include "data/postgres/PostgresErrors.h"
#include "data/postgres/PostgresResultReader.h"

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

} // namespace

struct PostgresResultStream::Private {
    PGconn* connection = nullptr;
    Catalog* catalog = nullptr;
    QString sql;
    std::function<QByteArray(const QString&)> rewrite;
    QByteArray statement;
    std::unique_ptr<ResultDecoder> decoder;
    bool started = false;
    bool ended = false;
    bool inTransaction = false;

    ResultHandle exec(const QByteArray& text, ExecStatusType wanted) {
        ResultHandle result(PQexec(connection, text.constData()));
        if (!result)
            throw connectionError(connection, QStringLiteral("The statement could not be sent"));
        if (PQresultStatus(result.get()) != wanted)
            throw spelledAsWritten(errorFromResult(result.get(), connection), sql);
        return result;
    }
    void finish() {
        if (!inTransaction)
            return;
        inTransaction = false;
        // Ends the cursor with the transaction; a failed transaction rolls back the same way.
        ResultHandle done(PQexec(connection, "ROLLBACK"));
    }
};

PostgresResultStream::PostgresResultStream(PGconn* connection, Catalog& catalog, const QString& sql,
                                           std::function<QByteArray(const QString&)> rewrite)
    : d(std::make_unique<Private>()) {
    d->connection = connection;
    d->catalog = &catalog;
    d->sql = sql;
    d->rewrite = std::move(rewrite);
    d->statement = d->rewrite(sql);
    // The columns from the statement's description, before any row is produced.
    ResultHandle prepared(PQprepare(connection, "", d->statement.constData(), 0, nullptr));
    if (!prepared)
        throw connectionError(connection, QStringLiteral("The statement could not be sent"));
    if (PQresultStatus(prepared.get()) != PGRES_COMMAND_OK)
        throw spelledAsWritten(errorFromResult(prepared.get(), connection), sql);
    ResultHandle described(PQdescribePrepared(connection, ""));
    if (!described)
        throw connectionError(connection, QStringLiteral("The statement could not be sent"));
    if (PQresultStatus(described.get()) != PGRES_COMMAND_OK)
        throw spelledAsWritten(errorFromResult(described.get(), connection), sql);
    d->decoder = std::make_unique<ResultDecoder>(described.get(), catalog, sql, false);
}

PostgresResultStream::~PostgresResultStream() {
    d->finish();
}

const ColumnList& PostgresResultStream::columns() const {
    return d->decoder->columns();
}

bool PostgresResultStream::orderBy(const std::vector<SortColumn>& columns) {
    if (d->started || columns.empty())
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

std::unique_ptr<RowStore> PostgresResultStream::read(qsizetype maxRows) {
    auto rows = std::make_unique<RowStore>(d->decoder->columns());
    if (d->ended)
        return rows;
    try {
        if (!d->started) {
            d->started = true;
            d->exec("BEGIN READ ONLY", PGRES_COMMAND_OK);
            d->inTransaction = true;
            d->exec("DECLARE vx_rows NO SCROLL CURSOR FOR " + d->statement, PGRES_COMMAND_OK);
        }
        const qsizetype wanted = qMax<qsizetype>(1, maxRows);
        const ResultHandle piece = d->exec(
            "FETCH FORWARD " + QByteArray::number(wanted) + " FROM vx_rows", PGRES_TUPLES_OK);
        d->decoder->append(*rows, piece.get());
        if (PQntuples(piece.get()) < wanted) {
            d->ended = true;
            d->finish();
        }
    } catch (...) {
        d->ended = true;
        d->finish();
        throw;
    }
    return rows;
}

bool PostgresResultStream::atEnd() const {
    return d->ended;
}

} // namespace vx::postgres
