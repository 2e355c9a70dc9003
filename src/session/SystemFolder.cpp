#include "session/SystemFolder.h"

#include <QDir>
#include <QStandardPaths>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace vx {

QString systemFolder() {
    const QString overridden = qEnvironmentVariable("VXUILIB_SYSTEM_DIR");
    if (!overridden.isEmpty())
        return QDir::cleanPath(overridden);
#ifdef Q_OS_WIN
    wchar_t buffer[MAX_PATH + 1] = {};
    const UINT length = GetWindowsDirectoryW(buffer, MAX_PATH);
    if (length > 0 && length <= MAX_PATH)
        return QDir::fromNativeSeparators(QString::fromWCharArray(buffer, int(length)));
#endif
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/VXUILib");
}

QString handOverFolder() {
    return systemFolder() + QStringLiteral("/zn5000");
}

QString handOverFilePath(const QString& name) {
    return handOverFolder() + u'/' + name;
}

QString libraryCatalogPath() {
    return handOverFolder() + QStringLiteral("/vxlibraries.ini");
}

} // namespace vx
