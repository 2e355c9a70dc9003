#include "data/sqlite/SqliteResultStream.h"

#include "data/dialect/LeadingOrder.h"
#include "data/dialect/SqlLexer.h"
#include "data/sqlite/SqliteResultReader.h"
#include "data/sqlite/SqliteSupport.h"

namespace vx::sqlite {

namespace {

// Values the engine orders as the record set does: numbers by value, Yes/No as -1 and 0, dates
// as the ISO text they are stored in. Text is left to the record set: the engine's collation
// neither folds case beyond ASCII nor knows accents.
bool engineOrders(DataType type) {
    switch (type) {
    case DataType::Boolean:
    case DataType::TinyInt:
    case DataType::UnsignedTinyInt:
    case DataType::SmallInt:
    case DataType::Integer:
    case DataType::BigInt:
    case DataType::Single:
    case DataType::Double:
    case DataType::Currency:
    case DataType::Numeric:
    case DataType::Date:
        return true;
    default:
        return false;
    }
}

} // namespace

struct SqliteResultStream::Private {
    sqlite3* db = nullptr;
    QString sql;
    std::function<QString(const QString&)> rewrite;
    SqliteTableKeys* keys = nullptr;
    StatementHandle statement;
    std::unique_ptr<ResultRows> rows;
    bool started = false;

    void prepareQuery(const QString& text) {
        const QByteArray bytes = (rewrite ? rewrite(text) : text).toUtf8();
        const char* tail = nullptr;
        StatementHandle prepared = prepare(db, bytes, 0, &tail);
        if (!prepared)
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("Command text was not set for the command object."));
        for (const auto& token : dialect::tokenize(QString::fromUtf8(tail))) {
            if (token.isSignificant() && !token.isSymbol(u";"))
                throw Error(ErrorNumber::SyntaxError,
                            QStringLiteral("Characters found after end of SQL statement."));
        }
        rows.reset();
        statement = std::move(prepared);
        rows = std::make_unique<ResultRows>(db, statement.get(), sql, *keys);
    }
    void finishIfExhausted() {
        if (rows->atEnd())
            statement.reset();
    }
};

SqliteResultStream::SqliteResultStream(sqlite3* db, const QString& sql,
                                       std::function<QString(const QString&)> rewrite,
                                       SqliteTableKeys& keys)
    : d(std::make_unique<Private>()) {
    d->db = db;
    d->sql = sql;
    d->rewrite = std::move(rewrite);
    d->keys = &keys;
    d->prepareQuery(sql);
}

SqliteResultStream::~SqliteResultStream() {
    // The reader points into the statement: it goes first.
    d->rows.reset();
}

const ColumnList& SqliteResultStream::columns() const {
    return d->rows->columns();
}

bool SqliteResultStream::orderBy(const std::vector<SortColumn>& columns) {
    if (d->started || columns.empty() || !d->rewrite)
        return false;
    for (const SortColumn& column : columns) {
        if (column.column < 0 || column.column >= d->rows->columns().size() ||
            !d->rows->typeDeclared(column.column) ||
            !engineOrders(d->rows->columns().at(column.column).type))
            return false;
    }
    const QString ordered = dialect::withLeadingOrder(d->sql, dialect::orderTerms(columns));
    if (ordered.isEmpty())
        return false;
    const ColumnList before = d->rows->columns();
    d->prepareQuery(ordered);
    // The same columns, described the same way, or the order is not the one asked for.
    const ColumnList& after = d->rows->columns();
    bool same = after.size() == before.size();
    for (qsizetype i = 0; same && i < after.size(); ++i)
        same = after[i].name == before[i].name && after[i].type == before[i].type;
    if (!same) {
        d->prepareQuery(d->sql);
        return false;
    }
    return true;
}

qsizetype SqliteResultStream::fetch(RowStore& into, qsizetype maxRows) {
    if (!d->statement)
        return 0;
    d->started = true;
    const qsizetype fetched = d->rows->fetch(into, qMax<qsizetype>(1, maxRows));
    d->finishIfExhausted();
    return fetched;
}

std::unique_ptr<RowStore> SqliteResultStream::read(qsizetype maxRows) {
    if (!d->statement)
        return std::make_unique<RowStore>(d->rows->columns());
    d->started = true;
    // The reader types computed columns from their first values before laying out the store.
    std::unique_ptr<RowStore> rows = d->rows->read(qMax<qsizetype>(1, maxRows));
    d->finishIfExhausted();
    return rows;
}

bool SqliteResultStream::atEnd() const {
    return d->started && (!d->statement || d->rows->atEnd());
}

} // namespace vx::sqlite
