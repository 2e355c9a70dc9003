#pragma once

#include "data/Connection.h"

#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// The connection text every control builds from its group initialisation file: the data-link path
// from section "datalinks", key "Group", followed by the fixed password part. A missing file,
// section or key gives an empty path; the open then fails.
QString groupConnectionText(const QString& initFilePath);

// A new connection opened with that text, empty user and password. Throws vx::Error on failure.
VXUILIB_EXPORT Connection openGroupConnection(const QString& initFilePath);

} // namespace vx
