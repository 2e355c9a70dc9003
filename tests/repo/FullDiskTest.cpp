// The repository tool on a disk that fills up: it says what it could not make and leaves
// nothing half-made behind, so the same command succeeds once there is room.
#include "RepoTestSupport.h"
#include "core/CommandLine.h"
#include "core/FormDocument.h"
#include "core/Repository.h"
#include "core/SampleContent.h"
#include "support/SmallDisk.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;

namespace {

struct ToolRun {
    int code = -1;
    QString err;
};

ToolRun run(const QStringList& arguments, const QString& catalog) {
    ToolRun result;
    QString out;
    QTextStream outStream(&out);
    QTextStream err(&result.err);
    result.code = repo::runRepositoryTool(arguments, outStream, err, catalog);
    err.flush();
    return result;
}

QStringList entriesOf(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

// Without the engine's write-ahead log and its index, which a failed open may leave and the
// next open takes over.
QStringList filesOf(const QString& folder) {
    QStringList files = entriesOf(folder);
    files.removeIf([](const QString& name) {
        return name.endsWith(QStringLiteral("-wal")) || name.endsWith(QStringLiteral("-shm"));
    });
    return files;
}

TEST(RepositoryToolFullDisk, CreateSaysWhatFailedAndLeavesNothingBehind) {
    // Room for the data-link file but not the database, and room for a database with only
    // some of its tables.
    for (const qint64 room : {qint64(8 * 1024), qint64(24 * 1024), qint64(48 * 1024)}) {
        SCOPED_TRACE(room);
        test::SmallDisk disk(room);
        ASSERT_TRUE(disk.isReady());
        const QString dir = disk.path(QStringLiteral("repo"));
        const ToolRun failed = run({QStringLiteral("create"), dir}, disk.path("catalog.ini"));
        disk.lift();
        ASSERT_EQ(failed.code, repo::ExitFailed) << failed.err.toStdString();
        EXPECT_TRUE(failed.err.contains(QStringLiteral("Cannot create the repository in ") +
                                        QDir::toNativeSeparators(dir)))
            << failed.err.toStdString();
        EXPECT_TRUE(failed.err.contains(QStringLiteral("full")) ||
                    failed.err.contains(disk.cause) || failed.err.contains("I/O"))
            << failed.err.toStdString();
        EXPECT_EQ(entriesOf(disk.folder()), QStringList()) << "the folder it made goes too";
    }
    // With room, the same command makes a repository that opens.
    QTemporaryDir roomy;
    const QString dir = roomy.filePath(QStringLiteral("repo"));
    ASSERT_EQ(run({QStringLiteral("create"), dir}, roomy.filePath("catalog.ini")).code,
              repo::ExitOk);
    repo::Repository repository = repo::Repository::open(dir);
    EXPECT_TRUE(test::tableNames(repository.connection()).contains(QStringLiteral("KTItem")));
}

TEST(RepositoryToolFullDisk, AddGroupSaysWhatFailedAndLeavesTheRepositoryAsItWas) {
    test::SmallDisk disk(1024 * 1024);
    ASSERT_TRUE(disk.isReady());
    if (!disk.isMounted())
        GTEST_SKIP() << "needs a small file system of its own (root may mount one)";
    const QString dir = disk.path(QStringLiteral("repo"));
    const QString catalog = disk.path(QStringLiteral("catalog.ini"));
    ASSERT_EQ(run({QStringLiteral("create"), dir}, catalog).code, repo::ExitOk);
    QTemporaryDir elsewhere;
    const QString form = elsewhere.filePath(QStringLiteral("Invoices.xml"));
    repo::FormDocument::fromFields(QStringLiteral("Invoices"), repo::sample::fields()).save(form);
    const QStringList addGroup{QStringLiteral("add-group"), dir,
                               QStringLiteral("--form"),    form,
                               QStringLiteral("--name"),    QStringLiteral("Invoices"),
                               QStringLiteral("--library"), QStringLiteral("Main")};
    const QStringList before = filesOf(dir);

    // Room for some of the group's files, or for them but not its table and indexes.
    for (const qint64 room : {qint64(4 * 1024), qint64(16 * 1024), qint64(40 * 1024)}) {
        SCOPED_TRACE(room);
        disk.fillLeaving(room);
        const ToolRun failed = run(addGroup, catalog);
        QFile::remove(disk.path(QStringLiteral("filler")));
        ASSERT_EQ(failed.code, repo::ExitFailed) << failed.err.toStdString();
        EXPECT_TRUE(failed.err.contains(QStringLiteral("Cannot add the group Invoices to ")))
            << failed.err.toStdString();
        EXPECT_EQ(filesOf(dir), before);
        repo::Repository repository = repo::Repository::open(dir);
        EXPECT_FALSE(
            test::tableNames(repository.connection()).contains(QStringLiteral("Invoices")));
        EXPECT_EQ(test::rowCount(repository.connection(), QStringLiteral("KTGroup")), 0);
    }
    EXPECT_EQ(run(addGroup, catalog).code, repo::ExitOk) << "once there is room";
}

} // namespace
