#pragma once

#include <QString>
#include <VXUILib/vxuilib_export.h>

class QFileDevice;

namespace vx {

// Flushes that let a finished file, and the name it was just given, survive a power cut. A
// repository row that names a file is committed durably; the file has to be as well, and a
// source may only be deleted once its copy is.

// Forces the open file's contents to the disk. False, with the system's reason, when the disk
// did not take them: a write that failed late shows here rather than as an empty file later.
VXUILIB_EXPORT bool flushContents(QFileDevice& file, QString& reason);

// Makes the names just given, taken or removed in `folder` permanent. Folders need no flush on
// Windows, where the file system journals names; file systems that cannot flush a folder
// count as done.
VXUILIB_EXPORT bool flushFolder(const QString& folder, QString& reason);

} // namespace vx
