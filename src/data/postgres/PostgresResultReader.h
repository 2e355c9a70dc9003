#pragma once

#include "data/RowStore.h"
#include "data/postgres/PostgresHandles.h"

#include <memory>

namespace vx::postgres {

class Catalog;

// Materialises a text-format result: column types and defined sizes from the type OIDs and
// modifiers, base table, column and key from the catalog, and every cell parsed straight into
// the compact store. `sql` is the statement as the caller wrote it, for naming repeated columns.
std::unique_ptr<RowStore> readResult(const PGresult* result, Catalog& catalog, const QString& sql);

} // namespace vx::postgres
