#pragma once

#include <QString>
#include <QStringList>

namespace vx {

// Rewrites the copy of a group's query form definition that travels with a portable export, so
// the viewer reads it against its own database: the data link becomes "veltrane.udl", each
// control's pick list points at its own table and column, and the literal quoting follows the
// field type. Returns the hint tables the viewer needs, one entry "table=column" per list field
// (table = form table + column + "Hints"). Throws vx::Error when the file cannot be read, parsed
// or written back.
QStringList rewriteQueryForm(const QString& path);

} // namespace vx
