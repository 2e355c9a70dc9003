#include "companions/StoredDocument.h"

#include "data/Error.h"
#include "session/DurableFiles.h"

#include <QByteArray>
#include <QFile>
#include <QRandomGenerator>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace vx {

namespace {

constexpr int StoredNameLength = 20;
constexpr int MaximumSuffix = 10000;
constexpr int WorkingNameAttempts = 100;
constexpr qint64 CopyPiece = qint64(1) << 18;

QString candidateName(qint32 itemId, int attempt, const QString& extension) {
    QString base = QString::number(itemId);
    if (attempt > 0)
        base += QLatin1Char('_') + QString::number(attempt);
    QString name = base;
    if (!extension.isEmpty() && base.size() + 1 < StoredNameLength)
        name += QLatin1Char('.') + extension.left(StoredNameLength - base.size() - 1);
    return name;
}

// Hidden, and never of the stored names' shape.
QString workingName() {
    return QStringLiteral(".filing-%1.part")
        .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0'));
}

enum class Move { Done, TargetExists, Failed };

// Renames `from` to `to` in one step unless `to` exists. Nothing is created or deleted on the
// way: file systems that keep deleted inodes aside for a while slow down as they pile up.
Move moveUnlessExists(const QString& from, const QString& to, QString& reason) {
#ifdef Q_OS_WIN
    if (MoveFileExW(reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(from).utf16()),
                    reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(to).utf16()), 0))
        return Move::Done;
    const DWORD error = GetLastError();
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS)
        return Move::TargetExists;
    reason = QStringLiteral("system error %1").arg(error);
    return Move::Failed;
#else
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
#ifdef RENAME_NOREPLACE
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0)
        return Move::Done;
    if (errno == EEXIST)
        return Move::TargetExists;
    // Some file systems do not know the flag; a second name and the first one's removal do.
    if (errno != EINVAL && errno != ENOSYS) {
        reason = QString::fromLocal8Bit(std::strerror(errno));
        return Move::Failed;
    }
#endif
    if (::link(source.constData(), target.constData()) == 0) {
        ::unlink(source.constData());
        return Move::Done;
    }
    if (errno == EEXIST)
        return Move::TargetExists;
    reason = QString::fromLocal8Bit(std::strerror(errno));
    return Move::Failed;
#endif
}

Error copyError(const QString& source, const QString& target, const QString& reason) {
    return Error(
        ErrorNumber::Unspecified,
        QStringLiteral("The document \"%1\" cannot be copied to \"%2\": %3")
            .arg(QDir::toNativeSeparators(source), QDir::toNativeSeparators(target), reason));
}

Error folderError(const QDir& folder, const QString& reason) {
    return Error(ErrorNumber::Unspecified,
                 QStringLiteral("The document folder \"%1\" does not take new files: %2")
                     .arg(QDir::toNativeSeparators(folder.absolutePath()), reason));
}

// Creates a new, empty file under the first of `names` that does not exist yet; returns its
// name. Throws when the folder refuses a name for another reason than that it is taken.
template <typename Names>
QString createExclusively(const QDir& folder, int attempts, Names names) {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const QString name = names(attempt);
        QFile file(folder.filePath(name));
        // NewOnly creates the file or fails when it exists, in one step.
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return name;
        if (!file.exists())
            throw folderError(folder, file.errorString());
    }
    return {};
}

void copyInto(const QString& source, QFile& target) {
    QFile input(source);
    if (!input.open(QIODevice::ReadOnly))
        throw copyError(source, target.fileName(), input.errorString());
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw copyError(source, target.fileName(), target.errorString());
    QByteArray piece;
    piece.resize(qsizetype(std::min(CopyPiece, std::max<qint64>(input.size(), 1))));
    for (;;) {
        const qint64 read = input.read(piece.data(), piece.size());
        if (read < 0)
            throw copyError(source, target.fileName(), input.errorString());
        if (read == 0)
            break;
        if (target.write(piece.constData(), read) != read)
            throw copyError(source, target.fileName(), target.errorString());
    }
    if (QString reason; !flushContents(target, reason))
        throw copyError(source, target.fileName(), reason);
    target.close();
    if (target.error() != QFileDevice::NoError)
        throw copyError(source, target.fileName(), target.errorString());
}

} // namespace

StoredDocument::StoredDocument(const QDir& folder, const QString& source, const QString& staging)
    : m_folder(folder)
    , m_staging(staging.isEmpty() ? folder : QDir(staging)) {
    m_workingName =
        createExclusively(m_staging, WorkingNameAttempts, [](int) { return workingName(); });
    if (m_workingName.isEmpty())
        throw folderError(m_staging, QStringLiteral("no free working name"));
    QFile target(m_staging.filePath(m_workingName));
    try {
        copyInto(source, target);
    } catch (...) {
        QFile::remove(target.fileName());
        throw;
    }
}

StoredDocument::~StoredDocument() {
    if (m_kept || m_lost)
        return;
    QFile::remove(path());
}

QString StoredDocument::path() const {
    return m_name.isEmpty() ? m_staging.filePath(m_workingName) : m_folder.filePath(m_name);
}

QString StoredDocument::placeAs(qint32 itemId, const QString& extension) {
    if (m_lost)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The copy of the document in \"%1\" was lost.")
                        .arg(QDir::toNativeSeparators(m_folder.absolutePath())));
    withdraw();
    const QString working = m_staging.filePath(m_workingName);
    for (int attempt = 0; attempt < MaximumSuffix; ++attempt) {
        const QString name = candidateName(itemId, attempt, extension);
        QString reason;
        switch (moveUnlessExists(working, m_folder.filePath(name), reason)) {
        case Move::Done:
            m_name = name;
            // Inside the filing's transaction, before its commit: a committed row never names
            // a file that a power cut could take back to its working name.
            if (!flushFolder(m_folder.absolutePath(), reason))
                throw copyError(working, m_folder.filePath(name), reason);
            return name;
        case Move::TargetExists:
            continue;
        case Move::Failed:
            throw copyError(working, m_folder.filePath(name), reason);
        }
    }
    throw Error(ErrorNumber::Unspecified,
                QStringLiteral("No free name for item %1 in the document folder \"%2\".")
                    .arg(itemId)
                    .arg(QDir::toNativeSeparators(m_folder.absolutePath())));
}

void StoredDocument::withdraw() noexcept {
    if (m_name.isEmpty() || m_kept)
        return;
    QString reason;
    // The working name was ours and nobody else makes names of its shape.
    if (moveUnlessExists(m_folder.filePath(m_name), m_staging.filePath(m_workingName), reason) !=
        Move::Done) {
        QFile::remove(m_folder.filePath(m_name));
        m_lost = true;
    }
    m_name.clear();
}

void StoredDocument::keep() {
    m_kept = true;
}

} // namespace vx
