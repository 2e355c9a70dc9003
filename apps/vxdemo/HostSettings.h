#pragma once

#include <QSettings>

namespace vx::demo {

// The host's own settings ("vxdemo"): the repository last opened, the server answer, the window's
// geometry and splitters. Kept beside the library's settings when those are redirected (tests,
// the tour), so nothing of the user's is touched then.
QSettings hostSettings();

} // namespace vx::demo
