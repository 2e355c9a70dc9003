#pragma once

#include "data/ResultStream.h"
#include "data/postgres/PostgresHandles.h"

#include <QByteArray>
#include <QString>
#include <functional>
#include <memory>

namespace vx::postgres {

class Catalog;
class Session;

// A query read a piece at a time through a server-side cursor, each piece one FETCH.
//
// A stream of its own (a connection opened for reading, serving nothing else meanwhile) reads
// in a read-only transaction of its own, one snapshot for all pieces; the rows come in the
// server's binary format where every column has one the store reads, and the next piece is
// asked for before the last one is decoded, so that the server works while the client does.
//
// A held stream shares the session: its cursor outlives the session's transactions, so a
// reader may write between pieces; each piece is one statement of the session.
class PostgresResultStream : public ResultStream {
public:
    // `rewrite` is the driver's dialect step, giving the one statement or throwing.
    PostgresResultStream(PGconn* connection, Catalog& catalog, const QString& sql,
                         std::function<QByteArray(const QString&)> rewrite);
    // `query` is already in the server's SQL; `cursorName` is unique on the session.
    PostgresResultStream(Session& session, Catalog& catalog, const QByteArray& query,
                         QByteArray cursorName);
    ~PostgresResultStream() override;

    const ColumnList& columns() const override;
    bool orderBy(const std::vector<SortColumn>& columns) override;
    qsizetype fetch(RowStore& into, qsizetype maxRows) override;
    bool atEnd() const override;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::postgres
