#pragma once

#include "data/Driver.h"

#include <memory>

namespace vx {

// The schema lists a connection hands out, as rows a read-only record set can walk.
// Tables: TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE, DESCRIPTION.
std::unique_ptr<RowStore> tablesRowset(const QList<TableEntry>& tables);
// Provider types: TYPE_NAME, DATA_TYPE, COLUMN_SIZE, LITERAL_PREFIX, LITERAL_SUFFIX,
// IS_NULLABLE, CASE_SENSITIVE, BEST_MATCH.
std::unique_ptr<RowStore> providerTypesRowset(const QList<ProviderTypeEntry>& types);

} // namespace vx
