#include "core/CommandLine.h"

#include "RepoTestSupport.h"
#include "core/Repository.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;

namespace {

struct ToolRun {
    int code = -1;
    QString out;
    QString err;
};

ToolRun run(const QStringList& arguments, const QString& catalog = {}) {
    ToolRun result;
    QTextStream out(&result.out);
    QTextStream err(&result.err);
    result.code = repo::runRepositoryTool(arguments, out, err, catalog);
    out.flush();
    err.flush();
    return result;
}

} // namespace

TEST(RepositoryTool, CreateNeverOverwritesARepository) {
    QTemporaryDir folder;
    const QString dir = folder.path();
    ASSERT_EQ(run({"create", dir}).code, repo::ExitOk);
    ASSERT_EQ(run({"add-user", dir, "alice"}).code, repo::ExitOk);

    const ToolRun again = run({"create", dir});
    EXPECT_EQ(again.code, repo::ExitFailed);
    EXPECT_TRUE(again.err.contains("already exists")) << again.err.toStdString();
    EXPECT_TRUE(again.err.contains("repository.db")) << again.err.toStdString();
    // The first repository kept its rows.
    repo::Repository repository = repo::Repository::open(dir);
    EXPECT_EQ(test::columnValues(repository.connection(), "SELECT UserName FROM KTUsers"),
              QVariantList{"alice"});

    // Another name in the same folder is a separate repository.
    EXPECT_EQ(run({"create", dir, "--name", "archive"}).code, repo::ExitOk);
    EXPECT_TRUE(QFile::exists(folder.filePath("archive.db")));
    EXPECT_EQ(run({"create-sample", dir}).code, repo::ExitFailed);
}

TEST(RepositoryTool, AddsOneRowEachAndRefusesDuplicates) {
    QTemporaryDir folder;
    const QString dir = folder.path();
    const ToolRun missing = run({"add-user", dir, "alice"});
    EXPECT_EQ(missing.code, repo::ExitFailed);
    EXPECT_TRUE(missing.err.contains("vxrepo create")) << missing.err.toStdString();

    ASSERT_EQ(run({"create", dir}).code, repo::ExitOk);
    EXPECT_EQ(run({"add-user", dir, "alice"}).code, repo::ExitOk);
    const ToolRun bob = run({"add-user", dir, "bob"});
    EXPECT_TRUE(bob.out.contains("id 2")) << bob.out.toStdString();
    EXPECT_EQ(run({"add-user", dir, "ALICE"}).code, repo::ExitFailed);
    EXPECT_EQ(run({"add-word", dir, "invoice"}).code, repo::ExitOk);
    EXPECT_EQ(run({"add-word", dir, "Invoice"}).code, repo::ExitFailed);
    EXPECT_EQ(run({"add-path", dir, folder.filePath("docs")}).code, repo::ExitOk);
    EXPECT_EQ(run({"add-path", dir, folder.filePath("docs")}).code, repo::ExitFailed);

    repo::Repository repository = repo::Repository::open(dir);
    EXPECT_EQ(
        test::columnValues(repository.connection(), "SELECT UserID FROM KTUsers ORDER BY UserName"),
        (QVariantList{1, 2}));
    EXPECT_EQ(test::rowCount(repository.connection(), "dictionary"), 1);
    EXPECT_EQ(test::columnValues(repository.connection(), "SELECT Path FROM KTPath"),
              QVariantList{repo::storedPath(folder.filePath("docs"))});
}

TEST(RepositoryTool, ExplainsUsageMistakes) {
    QTemporaryDir folder;
    for (const QStringList& arguments :
         {QStringList{}, QStringList{"frobnicate", folder.path()}, QStringList{"create"},
          QStringList{"create", folder.path(), "--colour", "red"},
          QStringList{"add-group", folder.path(), "--form", "x.xml", "--library", "Main"},
          QStringList{"create-sample", folder.path(), "--documents", "many"},
          QStringList{"create", folder.path(), "--name"}}) {
        const ToolRun result = run(arguments);
        EXPECT_EQ(result.code, repo::ExitUsage) << arguments.join(' ').toStdString();
        EXPECT_TRUE(result.err.contains("Usage: vxrepo")) << result.err.toStdString();
    }
    EXPECT_TRUE(run({"add-group", folder.path(), "--form", "x.xml", "--library", "Main"})
                    .err.contains("needs --name"));
    // Nothing was made by any of them.
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST(RepositoryTool, CreateSampleListsTheGroupInTheCatalog) {
    QTemporaryDir folder;
    const QString catalog = folder.filePath("system/vxlibraries.ini");
    const ToolRun result =
        run({"create-sample", folder.filePath("s"), "--documents", "20"}, catalog);
    ASSERT_EQ(result.code, repo::ExitOk) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains("20 (0 marked deleted)")) << result.out.toStdString();
    QFile file(catalog);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains(
        ("Invoices=" + repo::storedPath(folder.filePath("s/Invoices.ini"))).toUtf8()));
}
