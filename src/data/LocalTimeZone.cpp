#include "data/LocalTimeZone.h"

#include <QFileInfo>
#include <QtGlobal>
#include <ctime>
#include <mutex>

namespace vx {

void keepLocalTimeZoneLoaded() {
#if defined(Q_OS_LINUX)
    static std::once_flag once;
    std::call_once(once, [] {
        const char* const systemZone = "/etc/localtime";
        if (qEnvironmentVariableIsSet("TZ") || !QFileInfo::exists(QString::fromLatin1(systemZone)))
            return;
        qputenv("TZ", QByteArray(":") + systemZone);
        tzset();
    });
#endif
}

} // namespace vx
