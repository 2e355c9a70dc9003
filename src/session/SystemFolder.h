#pragma once

#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// The system's fixed folder: VXUILIB_SYSTEM_DIR when set, the Windows directory on Windows,
// otherwise "<per-user data folder>/VXUILib".
QString systemFolder();
// Where other programs of the system leave hand-over files: systemFolder() + "/zn5000".
QString handOverFolder();
// A hand-over file by its name ("~znindex", "~znfind").
QString handOverFilePath(const QString& name);
// The catalog of libraries: one section per library, one key per group naming its init file.
VXUILIB_EXPORT QString libraryCatalogPath();

} // namespace vx
