#pragma once

#include <QString>
#include <QtGlobal>

namespace vx {

class Connection;

// The user id of `userName` in the repository's KTUsers table (the name inserted into the SQL
// as it stands). When there is none, or the table cannot be read, says so and gives 0.
qint32 userIdForName(const Connection& connection, const QString& userName);

} // namespace vx
