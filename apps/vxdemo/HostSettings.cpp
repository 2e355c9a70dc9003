#include "HostSettings.h"

#include "session/Settings.h"

namespace vx::demo {

QSettings hostSettings() {
    const QString directory = settingsDirectory();
    if (!directory.isEmpty())
        return QSettings(directory + QStringLiteral("/vxdemo.ini"), QSettings::IniFormat);
    return QSettings(QStringLiteral("VXUILib"), QStringLiteral("vxdemo"));
}

} // namespace vx::demo
