#include "portable/FileCopier.h"

#include "data/Error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_LINUX
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace vx {

namespace {

constexpr qint32 fileNotFound = 53;
constexpr qsizetype bufferSize = qsizetype(1) << 20;

Error notFound(const QString& from) {
    return Error(fileNotFound, QStringLiteral("File not found: ") + QDir::toNativeSeparators(from));
}

#ifdef Q_OS_LINUX
// A descriptor of the regular file at `path` in blocking mode, or -1 with errno set (EINVAL for
// anything but a regular file).
int openRegular(const QString& path, int flags) {
    const int fd =
        ::open(QFile::encodeName(path).constData(), flags | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0)
        return -1;
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        errno = EINVAL;
        return -1;
    }
    const int mode = ::fcntl(fd, F_GETFL);
    if (mode < 0 || ::fcntl(fd, F_SETFL, mode & ~O_NONBLOCK) != 0) {
        const int error = errno;
        ::close(fd);
        errno = error;
        return -1;
    }
    return fd;
}

// The call is not there or cannot serve these two files: another way must copy them.
bool unsupported(int error) {
    return error == ENOSYS || error == EOPNOTSUPP || error == ENOTTY || error == EXDEV ||
           error == EINVAL || error == EPERM || error == ETXTBSY;
}
#endif

} // namespace

void FileCopier::copyOverwriting(const QString& from, const QString& to) {
    QFile source(from);
    qint64 size = -1;
#ifdef Q_OS_LINUX
    // Without blocking: a pipe planted under a document's name would wait for a writer forever.
    const int input = openRegular(from, O_RDONLY);
    if (input < 0 || !source.open(input, QIODevice::ReadOnly | QIODevice::Unbuffered,
                                  QFileDevice::AutoCloseHandle)) {
        if (input >= 0)
            ::close(input);
        throw notFound(from);
    }
    struct stat status {};
    if (::fstat(source.handle(), &status) != 0)
        throw notFound(from);
    size = status.st_size;
#else
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw notFound(from);
    if (!QFileInfo(from).isFile())
        throw notFound(from);
    size = source.size();
#endif

    // A target that cannot be opened (read-only, say) is someone's file: it is reported, never
    // deleted to make way.
    QFile target(to);
    const bool existed = QFileInfo::exists(to);
#ifdef Q_OS_LINUX
    // A link or a pipe planted where the copy goes is not written through.
    const int output = openRegular(to, O_WRONLY | O_CREAT | O_NOFOLLOW);
    if (output < 0) {
        const int error = errno;
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot copy %1 to %2: %3")
                        .arg(QDir::toNativeSeparators(from), QDir::toNativeSeparators(to),
                             error == ELOOP ? QStringLiteral("the name there is a symbolic link")
                             : error == EISDIR || error == ENXIO || error == EINVAL
                                 ? QStringLiteral("the name there is not a plain file")
                             : existed ? QStringLiteral("the file there cannot be written (%1)")
                                             .arg(qt_error_string(error))
                                       : qt_error_string(error)));
    }
    if (::ftruncate(output, 0) != 0 ||
        !target.open(output, QIODevice::WriteOnly | QIODevice::Unbuffered,
                     QFileDevice::AutoCloseHandle)) {
        const int error = errno;
        ::close(output);
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot copy %1 to %2: %3")
                        .arg(QDir::toNativeSeparators(from), QDir::toNativeSeparators(to),
                             qt_error_string(error)));
    }
#else
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot copy %1 to %2: %3")
                        .arg(QDir::toNativeSeparators(from), QDir::toNativeSeparators(to),
                             existed ? QStringLiteral("the file there cannot be written (%1)")
                                           .arg(target.errorString())
                                     : target.errorString()));
#endif
    QString reason;
    if (!copyBytes(source, target, size, reason)) {
        target.close();
        target.remove(); // never leave half a file behind
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot copy %1 to %2: %3")
                        .arg(QDir::toNativeSeparators(from), QDir::toNativeSeparators(to), reason));
    }
}

bool FileCopier::copyBytes(QFile& source, QFile& target, qint64 size, QString& reason) {
    if (m_buffer.isEmpty())
        m_buffer.resize(bufferSize);
#ifdef Q_OS_LINUX
    const int in = source.handle();
    const int out = target.handle();
    // A clone shares the blocks on file systems that can (what cp tries first, too).
    if (m_tryClone && size > 0) {
        if (::ioctl(out, FICLONE, in) == 0)
            return true;
        const int error = errno;
        if (!unsupported(error)) {
            reason = qt_error_string(error);
            return false;
        }
        // Another pair of file systems may clone; this one never will.
        m_tryClone = error != EOPNOTSUPP && error != ENOTTY && error != ENOSYS;
    }
    // The kernel copies without the bytes passing through this process.
    qint64 done = 0;
    while (m_tryKernelCopy && done < size) {
        const ssize_t copied = ::copy_file_range(in, nullptr, out, nullptr, size_t(size - done), 0);
        if (copied > 0) {
            done += copied;
            continue;
        }
        if (copied == 0)
            break; // the file shrank, or its file system reports nothing here: read the rest
        const int error = errno;
        if (error == EINTR)
            continue;
        if (!unsupported(error)) {
            reason = qt_error_string(error);
            return false;
        }
        m_tryKernelCopy = error != ENOSYS && error != EOPNOTSUPP;
        break;
    }
    // Whatever is left (all of it where the kernel could not copy) goes through the buffer,
    // from where the kernel left the file offsets.
    for (;;) {
        const ssize_t read = ::read(in, m_buffer.data(), size_t(m_buffer.size()));
        if (read == 0)
            return true;
        if (read < 0) {
            if (errno == EINTR)
                continue;
            reason = qt_error_string(errno);
            return false;
        }
        for (ssize_t written = 0; written < read;) {
            const ssize_t step =
                ::write(out, m_buffer.constData() + written, size_t(read - written));
            if (step < 0) {
                if (errno == EINTR)
                    continue;
                reason = qt_error_string(errno);
                return false;
            }
            written += step;
        }
    }
#else
    Q_UNUSED(size);
    for (;;) {
        const qint64 read = source.read(m_buffer.data(), m_buffer.size());
        if (read == 0)
            return true;
        if (read < 0) {
            reason = source.errorString();
            return false;
        }
        if (target.write(m_buffer.constData(), read) != read) {
            reason = target.errorString();
            return false;
        }
    }
#endif
}

} // namespace vx
