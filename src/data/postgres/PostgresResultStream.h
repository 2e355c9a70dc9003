#pragma once

#include "data/ResultStream.h"
#include "data/postgres/PostgresHandles.h"

#include <QByteArray>
#include <QString>
#include <functional>
#include <memory>

namespace vx::postgres {

class Catalog;

// A query read a piece at a time through a cursor in a read-only transaction of its own: one
// statement snapshot for all pieces, each piece one round trip. The connection serves nothing
// else while the stream reads; the stream is for a connection opened for it.
class PostgresResultStream : public ResultStream {
public:
    // `rewrite` is the driver's dialect step, giving the one statement or throwing.
    PostgresResultStream(PGconn* connection, Catalog& catalog, const QString& sql,
                         std::function<QByteArray(const QString&)> rewrite);
    ~PostgresResultStream() override;

    const ColumnList& columns() const override;
    bool orderBy(const std::vector<SortColumn>& columns) override;
    std::unique_ptr<RowStore> read(qsizetype maxRows) override;
    bool atEnd() const override;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::postgres
