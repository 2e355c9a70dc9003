#include "operations/DocumentFileMover.h"

#include "data/Error.h"
#include "session/DurableFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <filesystem>
#include <system_error>

namespace vx {
namespace {

constexpr qint64 CopyChunkSize = 1 << 20;

[[noreturn]] void failCopy(const QString& source, const QString& destination,
                           const QString& reason) {
    throw Error(ErrorNumber::Unspecified,
                QStringLiteral("Cannot copy %1 to %2: %3").arg(source, destination, reason));
}

bool isSameFile(const QString& source, const QString& destination) {
    const QFileInfo target(destination);
    return target.exists() && QFileInfo(source).canonicalFilePath() == target.canonicalFilePath();
}

std::filesystem::path fileSystemPath(const QString& path) {
    return std::filesystem::path(QDir::toNativeSeparators(path).toStdU16String());
}

} // namespace

void copyDocumentFile(const QString& source, const QString& destination) {
    QFile input(source);
    if (!QFileInfo(source).isFile())
        failCopy(source, destination, QStringLiteral("the file does not exist"));
    if (isSameFile(source, destination))
        return;
    if (!input.open(QIODevice::ReadOnly))
        failCopy(source, destination, input.errorString());

    // The rename below would replace a file the user may not write: such a file stays.
    const QFileInfo target(destination);
    if (target.exists() && (!target.isFile() || !target.isWritable()))
        failCopy(source, destination, QStringLiteral("the file there cannot be written"));
    QTemporaryFile partial(target.absolutePath() + QStringLiteral("/.") + target.fileName() +
                           QStringLiteral(".XXXXXX"));
    if (!partial.open())
        failCopy(source, destination, partial.errorString());
    while (!input.atEnd()) {
        const QByteArray chunk = input.read(CopyChunkSize);
        if (chunk.isEmpty() && input.error() != QFileDevice::NoError)
            failCopy(source, destination, input.errorString());
        if (partial.write(chunk) != chunk.size())
            failCopy(source, destination, partial.errorString());
    }
    // On the disk before it takes the destination's name: a move deletes the source next.
    if (QString reason; !flushContents(partial, reason))
        failCopy(source, destination, reason);
    partial.setPermissions(input.permissions());
    partial.setFileTime(QFileInfo(source).lastModified(), QFileDevice::FileModificationTime);
    partial.close();

    // Renaming replaces an existing destination in one step.
    std::error_code error;
    std::filesystem::rename(fileSystemPath(partial.fileName()), fileSystemPath(destination), error);
    if (error)
        failCopy(source, destination, QString::fromLocal8Bit(error.message()));
    partial.setAutoRemove(false);
    if (QString reason; !flushFolder(target.absolutePath(), reason))
        failCopy(source, destination, reason);
}

bool moveDocumentFile(const QString& source, const QString& destination) {
    try {
        if (isSameFile(source, destination))
            return true;
        const qint64 sourceSize = QFileInfo(source).size();
        copyDocumentFile(source, destination);
        const QFileInfo copied(destination);
        if (!copied.isFile() || copied.size() != sourceSize)
            return false;
        // When the source cannot be deleted the copy stays: both places then hold the file and
        // the repository still names the old one, so nothing is lost.
        return QFile::remove(source);
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace vx
