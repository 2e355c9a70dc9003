#include "companions/StagingFolder.h"

#include "data/Error.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QRandomGenerator>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace vx {

namespace {

Q_LOGGING_CATEGORY(lcStaging, "vx.filing", QtWarningMsg)

constexpr int NameAttempts = 100;
// The hidden folder in a document folder that holds the filing sessions' own folders.
const QString SessionsFolder = QStringLiteral(".filing");
// A folder just made is locked by its session within microseconds; this leaves any doubt out.
constexpr int UntouchedSeconds = 60;

#ifdef Q_OS_UNIX
// The folder's descriptor, locked; -1 when the lock is taken or the folder is gone.
int lockFolder(const QString& path) {
    const int folder = ::open(QFile::encodeName(path).constData(),
                              O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (folder < 0)
        return -1;
    if (::flock(folder, LOCK_EX | LOCK_NB) != 0) {
        ::close(folder);
        return -1;
    }
    return folder;
}

void unlockFolder(int& folder) {
    if (folder >= 0)
        ::close(folder); // closing lets the lock go
    folder = -1;
}

// Removes the folders of sessions that ended without removing them: only working copies are
// deleted, and a folder holding anything else stays.
void sweepAbandoned(const QDir& sessions, const QString& own) {
    const QDateTime untouchedSince = QDateTime::currentDateTimeUtc().addSecs(-UntouchedSeconds);
    const QFileInfoList folders =
        sessions.entryInfoList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo& folder : folders) {
        if (folder.fileName() == own || folder.isSymLink() ||
            folder.lastModified().toUTC() > untouchedSince)
            continue;
        int lock = lockFolder(folder.absoluteFilePath());
        if (lock < 0)
            continue; // its session is alive
        QDir abandoned(folder.absoluteFilePath());
        const QFileInfoList copies = abandoned.entryInfoList(
            {QStringLiteral(".filing-*.part")}, QDir::Files | QDir::Hidden | QDir::System);
        for (const QFileInfo& copy : copies)
            QFile::remove(copy.absoluteFilePath());
        const bool removed = QDir().rmdir(folder.absoluteFilePath());
        qCDebug(lcStaging) << "abandoned filing folder" << folder.absoluteFilePath()
                           << (removed ? "removed" : "kept: it holds other files");
        unlockFolder(lock);
    }
}
#endif

} // namespace

StagingFolder::~StagingFolder() {
    release();
}

QString StagingFolder::in(const QDir& documentFolder) {
    const QString parent = documentFolder.absolutePath();
    if (!m_path.isEmpty() && parent == m_parent && QDir(m_path).exists())
        return m_path;
    release();
    const QDir sessions(documentFolder.filePath(SessionsFolder));
    for (int attempt = 0; attempt < NameAttempts; ++attempt) {
        // Another session may remove the shared parent when it leaves it empty: made again.
        documentFolder.mkdir(SessionsFolder);
        const QString name =
            QStringLiteral("session-%1")
                .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0'));
        // mkdir fails when the name exists: the folder is this session's alone.
        if (sessions.mkdir(name)) {
            m_parent = parent;
            m_path = sessions.filePath(name);
#ifdef Q_OS_UNIX
            m_lock = lockFolder(m_path);
            sweepAbandoned(sessions, name);
#endif
            return m_path;
        }
        if (sessions.exists() && !sessions.exists(name))
            break; // the folder refuses new entries
    }
    throw Error(ErrorNumber::Unspecified,
                QStringLiteral("The document folder \"%1\" does not take new files.")
                    .arg(QDir::toNativeSeparators(parent)));
}

void StagingFolder::release() {
    if (!m_path.isEmpty()) {
        // Only when empty: a copy still in it is someone's to find.
        QDir().rmdir(m_path);
        QDir().rmdir(QFileInfo(m_path).absolutePath()); // the shared parent, when nobody is in it
    }
#ifdef Q_OS_UNIX
    unlockFolder(m_lock);
#endif
    m_path.clear();
    m_parent.clear();
}

} // namespace vx
