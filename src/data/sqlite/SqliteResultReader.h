#pragma once

#include "data/RowStore.h"

#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace vx::sqlite {

class SqliteTableKeys;

// Steps a prepared query to its end and keeps every row, with each column's type and size from
// its declared type, its base table and column, and whether it belongs to the table's key.
// `sql` is the text as the caller wrote it (repeated column names take its table spelling);
// `expectedRows` reserves room when the caller knows the count.
std::unique_ptr<RowStore> readResult(sqlite3* db, sqlite3_stmt* statement, const QString& sql,
                                     SqliteTableKeys& keys, qsizetype expectedRows = 0);

} // namespace vx::sqlite
