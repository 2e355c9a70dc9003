#pragma once

#include "data/RowStore.h"
#include "data/postgres/PostgresHandles.h"

#include <memory>
#include <vector>

namespace vx::postgres {

class Catalog;

// Reads the results of one query, in the text or the binary format: the columns described once
// (from a result or from the statement's description), then the rows of each result appended as
// they arrive.
class ResultDecoder {
public:
    // `fitCheck`: a computed 64-bit column reads as 32-bit when every value of `result` fits,
    // as on the embedded engine; without it (rows still to come) it stays 64-bit.
    ResultDecoder(const PGresult* result, Catalog& catalog, const QString& sql, bool fitCheck);
    ~ResultDecoder();

    const ColumnList& columns() const { return m_columns; }
    // The server's type of a column.
    Oid typeOf(int column) const { return m_types[size_t(column)]; }
    // Whether the server can send the rows in its binary format (cheaper to read).
    bool readsBinary() const { return m_binary; }
    // Appends `count` rows of `result` from `first` on (all of them by default).
    void append(RowStore& rows, const PGresult* result, int first = 0, int count = -1) const;

private:
    ColumnList m_columns;
    std::vector<int> m_kinds;
    std::vector<Oid> m_types;
    bool m_binary = false;
};

// Materialises a text-format result: column types and defined sizes from the type OIDs and
// modifiers, base table, column and key from the catalog, and every cell parsed straight into
// the compact store. `sql` is the statement as the caller wrote it, for naming repeated columns.
std::unique_ptr<RowStore> readResult(const PGresult* result, Catalog& catalog, const QString& sql);

// Appends the rows of a result whose columns are those of `into` (a cursor's next piece);
// returns how many.
qsizetype appendResultRows(const PGresult* result, RowStore& into);

} // namespace vx::postgres
