#pragma once

#include <QString>

namespace vx::repo {

// The CD viewer's files that a portable export copies into every volume, as kept in the folder
// "veltrane" beside a repository: "veltrane.exe" and "veltrane.chm" (stand-ins naming what the
// real files are) and "veltrane.udl", a data-link file opening the exported "veltrane.znl"
// in the folder it is copied to.
inline const QString ViewerFolderName = QStringLiteral("veltrane");

// Writes the folder DIR/veltrane with the three files; throws vx::Error when it cannot.
void writeViewerFiles(const QString& dir);

} // namespace vx::repo
