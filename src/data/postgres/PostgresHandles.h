#pragma once

// Internal to the PostgreSQL driver: libpq stays out of the layer's public headers.
#include <libpq-fe.h>
#include <memory>

namespace vx::postgres {

struct ConnectionDeleter {
    void operator()(PGconn* connection) const noexcept { PQfinish(connection); }
};
struct ResultDeleter {
    void operator()(PGresult* result) const noexcept { PQclear(result); }
};

using ConnectionHandle = std::unique_ptr<PGconn, ConnectionDeleter>;
using ResultHandle = std::unique_ptr<PGresult, ResultDeleter>;

// Type OIDs of the built-in types the driver maps (fixed in the server's catalog).
namespace TypeOid {
inline constexpr Oid Bool = 16;
inline constexpr Oid Bytea = 17;
inline constexpr Oid Char = 18;
inline constexpr Oid Name = 19;
inline constexpr Oid Int8 = 20;
inline constexpr Oid Int2 = 21;
inline constexpr Oid Int4 = 23;
inline constexpr Oid Text = 25;
inline constexpr Oid ObjectId = 26;
inline constexpr Oid Float4 = 700;
inline constexpr Oid Float8 = 701;
inline constexpr Oid Unknown = 705;
inline constexpr Oid BpChar = 1042;
inline constexpr Oid VarChar = 1043;
inline constexpr Oid Date = 1082;
inline constexpr Oid Time = 1083;
inline constexpr Oid Timestamp = 1114;
inline constexpr Oid TimestampTz = 1184;
inline constexpr Oid Numeric = 1700;
inline constexpr Oid Uuid = 2950;
} // namespace TypeOid

} // namespace vx::postgres
