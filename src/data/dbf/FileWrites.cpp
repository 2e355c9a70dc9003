#include "data/dbf/FileWrites.h"

#include "data/Error.h"

#include <QFile>
#include <cerrno>
#include <cstring>

namespace vx::dbf {

namespace {

// Qt reports a short write without a cause, and a refused one with the system's text; the
// system's last error fills in what Qt leaves unsaid.
QString causeOf(const QFile& file, int systemError) {
    if (file.error() != QFileDevice::NoError) {
        const QString reason = file.errorString();
        if (!reason.isEmpty() && reason != QLatin1String("Unknown error"))
            return reason;
    }
    if (systemError != 0)
        return QString::fromLocal8Bit(std::strerror(systemError));
    return QStringLiteral("the file system accepted only part of the data");
}

} // namespace

QString writeFully(QFile& file, qint64 position, const char* bytes, qint64 size) {
    if (!file.seek(position))
        return causeOf(file, errno);
    qint64 done = 0;
    while (done < size) {
        file.unsetError();
        errno = 0;
        const qint64 written = file.write(bytes + done, size - done);
        if (written <= 0)
            return causeOf(file, errno);
        done += written;
    }
    return {};
}

void writeOrThrow(QFile& file, qint64 position, const char* bytes, qint64 size,
                  const QString& what) {
    const QString failure = writeFully(file, position, bytes, size);
    if (!failure.isEmpty())
        throw Error(
            ErrorNumber::Unspecified,
            QStringLiteral("Cannot write the %1 '%2': %3").arg(what, file.fileName(), failure));
}

} // namespace vx::dbf
