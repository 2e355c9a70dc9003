#pragma once

#include "data/Error.h"
#include "data/postgres/PostgresHandles.h"

namespace vx::postgres {

// The server's failure as the layer's error: the SQLSTATE picks the well-known numbers the
// controls test (a missing table, a syntax error, a broken key); the text is the server's.
Error errorFromResult(const PGresult* result, PGconn* connection);
// A failure of the connection itself (refused, lost, bad password), with what was being done.
Error connectionError(PGconn* connection, const QString& doing);
// The same description the embedded engine gives for a missing table.
Error tableNotFound(const QString& table);
// A missing table named as the statement spells it ("KTRevision"), not as the server folded
// it ("ktrevision"); other errors are returned unchanged.
Error spelledAsWritten(const Error& error, const QString& sql);

} // namespace vx::postgres
