#include "session/DurableFiles.h"

#include <QFile>
#include <QFileDevice>

#ifdef Q_OS_WIN
#include <io.h>
#include <windows.h>
#else
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace vx {

#ifdef Q_OS_WIN

bool flushContents(QFileDevice& file, QString& reason) {
    if (!file.flush()) {
        reason = file.errorString();
        return false;
    }
    if (FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()))))
        return true;
    reason = QStringLiteral("system error %1").arg(GetLastError());
    return false;
}

bool flushFolder(const QString&, QString&) {
    return true;
}

#else

namespace {

QString systemReason() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

bool flushContents(QFileDevice& file, QString& reason) {
    if (!file.flush()) {
        reason = file.errorString();
        return false;
    }
    if (::fdatasync(file.handle()) == 0)
        return true;
    reason = systemReason();
    return false;
}

bool flushFolder(const QString& folder, QString& reason) {
    const int handle =
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) {
        reason = systemReason();
        return false;
    }
    const bool flushed = ::fsync(handle) == 0 || errno == EINVAL || errno == EROFS;
    if (!flushed)
        reason = systemReason();
    ::close(handle);
    return flushed;
}

#endif

} // namespace vx
