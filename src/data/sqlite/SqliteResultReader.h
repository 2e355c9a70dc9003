#pragma once

#include "data/RowStore.h"
#include "data/sqlite/SqliteSupport.h"

#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace vx::sqlite {

class SqliteTableKeys;

// Reads a prepared query's rows a piece at a time. Columns come from the statement's
// description; a computed column without a declared type takes its type from its first value,
// so until the first read it stands as text.
class ResultRows {
public:
    ResultRows(sqlite3* db, sqlite3_stmt* statement, const QString& sql, SqliteTableKeys& keys);
    ~ResultRows();
    ResultRows(const ResultRows&) = delete;
    ResultRows& operator=(const ResultRows&) = delete;

    const ColumnList& columns() const;
    // Whether the column's type is known before its values (declared).
    bool typeDeclared(int column) const;
    // Up to `maxRows` further rows (all with maxRows <= 0); `reserve` lays out room for them.
    std::unique_ptr<RowStore> read(qsizetype maxRows, qsizetype reserve = 0);
    // Appends up to `maxRows` further rows to `into` (of these columns); returns how many.
    qsizetype fetch(RowStore& into, qsizetype maxRows);
    bool atEnd() const;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

// Steps a prepared query to its end and keeps every row, with each column's type and size from
// its declared type, its base table and column, and whether it belongs to the table's key.
// `sql` is the text as the caller wrote it (repeated column names take its table spelling);
// `expectedRows` reserves room when the caller knows the count.
std::unique_ptr<RowStore> readResult(sqlite3* db, sqlite3_stmt* statement, const QString& sql,
                                     SqliteTableKeys& keys, qsizetype expectedRows = 0);

// The columns of a prepared query, without stepping it. `allTyped` is set false when a column has
// no declared type (it then reads as text here; readResult would type it from its values).
ColumnList describeResult(sqlite3_stmt* statement, const QString& sql, SqliteTableKeys& keys,
                          bool& allTyped);

} // namespace vx::sqlite
