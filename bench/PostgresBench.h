#pragma once

#include <QString>

namespace vx::bench {

// The hit list's query on a PostgreSQL database ("Provider=PostgreSQL;Host=...;..."): opening it
// into a Recordset against a raw libpq loop (PQexec, then PQgetvalue on every value). Makes the
// bench tables there and drops them afterwards; refuses a database that already has them.
// Returns false when the two disagree on the number of rows.
bool measurePostgres(const QString& initString, int documents);

} // namespace vx::bench
