#pragma once

#include "data/Driver.h"

namespace vx::postgres {

class Session;

// The relations of the connection's schema as "TABLE" and "VIEW", and the server's own
// catalogs (pg_catalog, information_schema) as "SYSTEM TABLE", by name without regard to case.
// Tables carry the name they were declared with.
QList<TableEntry> readTables(Session& session);
QStringList readIndexNames(Session& session);

// The types the repository's columns report, with the same rows and literal affixes as the
// embedded engine for the types both have (the controls' SQL is rewritten, "#date#" included).
QList<ProviderTypeEntry> postgresProviderTypes();

} // namespace vx::postgres
