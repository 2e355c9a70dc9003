#pragma once

#include "data/ResultStream.h"

#include <QString>
#include <functional>
#include <memory>

struct sqlite3;

namespace vx::sqlite {

class SqliteTableKeys;

// A query (or a table) of the embedded engine read a piece at a time. `rewrite` is the driver's
// dialect step; the statement is prepared from the query as written, and again with an order
// when one is asked for. Without a dialect step the text is the engine's own and is not
// reordered. The statement is finalised once its rows are exhausted: an open statement would
// keep its snapshot of the file.
class SqliteResultStream : public ResultStream {
public:
    SqliteResultStream(sqlite3* db, const QString& sql,
                       std::function<QString(const QString&)> rewrite, SqliteTableKeys& keys);
    ~SqliteResultStream() override;

    const ColumnList& columns() const override;
    bool orderBy(const std::vector<SortColumn>& columns) override;
    qsizetype fetch(RowStore& into, qsizetype maxRows) override;
    std::unique_ptr<RowStore> read(qsizetype maxRows) override;
    bool atEnd() const override;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::sqlite
