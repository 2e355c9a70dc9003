#include "companions/StagingFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#endif

namespace vx::test {
namespace {

#ifdef Q_OS_UNIX

// Untouched for years, as far as the sweep can tell.
void age(const QString& folder) {
    const timespec aged[2] = {{1000000000, 0}, {1000000000, 0}};
    EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(folder).constData(), aged, 0), 0);
}

// Folders left behind by filing sessions that crashed are swept by the next session; a live
// session's folder, a fresh one and anything but working copies stay.
TEST(StagingFolderTest, TheNextSessionSweepsOnlyAbandonedWorkingCopies) {
    QTemporaryDir root;
    const QDir documents(root.path());
    const QDir sessions(root.filePath(QStringLiteral(".filing")));
    auto makeFolder = [&](const QString& name, const QStringList& files, bool old) {
        EXPECT_TRUE(sessions.mkpath(name));
        for (const QString& file : files) {
            QFile out(sessions.filePath(name + u'/' + file));
            EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        }
        if (old)
            age(sessions.filePath(name));
    };
    StagingFolder alive;
    const QString aliveFolder = alive.in(documents);
    age(aliveFolder);

    makeFolder(QStringLiteral("crashed"),
               {QStringLiteral(".filing-1.part"), QStringLiteral(".filing-2.part")}, true);
    makeFolder(QStringLiteral("crashed-with-other"),
               {QStringLiteral(".filing-3.part"), QStringLiteral("keep.txt")}, true);
    makeFolder(QStringLiteral("just-made"), {QStringLiteral(".filing-4.part")}, false);

    StagingFolder next;
    const QString nextFolder = next.in(documents);

    EXPECT_FALSE(sessions.exists(QStringLiteral("crashed")));
    EXPECT_EQ(QDir(sessions.filePath(QStringLiteral("crashed-with-other")))
                  .entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("keep.txt")});
    EXPECT_TRUE(QFile::exists(sessions.filePath(QStringLiteral("just-made/.filing-4.part"))));
    EXPECT_TRUE(QDir(aliveFolder).exists());
    EXPECT_NE(nextFolder, aliveFolder);
}

#endif

// The hidden parent goes with the last session that leaves it empty.
TEST(StagingFolderTest, SessionsShareOneHiddenFolderRemovedWhenEmpty) {
    QTemporaryDir root;
    const QDir documents(root.path());
    {
        StagingFolder first;
        StagingFolder second;
        const QString a = first.in(documents);
        const QString b = second.in(documents);
        EXPECT_NE(a, b);
        EXPECT_EQ(QFileInfo(a).absolutePath(), QFileInfo(b).absolutePath());
        EXPECT_EQ(QFileInfo(a).absolutePath(), documents.filePath(QStringLiteral(".filing")));
    }
    EXPECT_TRUE(
        documents.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
}

} // namespace
} // namespace vx::test
