#pragma once

#include <QString>
#include <QStringList>

namespace vx {

// The instructions file "ReadMe.txt" written into the root of every portable export.

// The lines of the file for an export kind ("ExportToCD" or "ExportToFolder") whose first volume
// is `volumeName`; `customSize` tells a custom CD size from a fixed one.
QStringList readMeLines(const QString& exportKind, const QString& volumeName, bool customSize);

// Creates or overwrites root/ReadMe.txt with lines ending in CR LF, taking `CustomSize` from the
// library's export settings. On failure tells the user (title "WriteReadMe") and returns false.
bool WriteReadMe(const QString& root, const QString& exportKind, const QString& volumeName);

} // namespace vx
