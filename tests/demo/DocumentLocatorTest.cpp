#include "DocumentLocator.h"

#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace {

using vx::demo::DocumentLocator;

TEST(DocumentLocator, FindsStoredFilesUnderTheRepositoryPathsAndAnswersErrorOtherwise) {
    vx::test::TestEnvironment environment;
    vx::test::SampleRepository sample;
    const DocumentLocator locator(sample.initFilePath());
    ASSERT_FALSE(locator.folders().isEmpty());

    const QString expected =
        QDir::toNativeSeparators(QDir(sample.documentFolder()).filePath("inv0000001.txt"));
    EXPECT_EQ(locator.locate("inv0000001.txt"), expected);
    EXPECT_EQ(locator.locate(" inv0000001.txt "), expected) << "stored names may carry blanks";
    // Without a file name the item's file row names it.
    EXPECT_EQ(locator.locateItem(1, QString()), expected);
    EXPECT_EQ(locator.locateItem(1, "inv0000002.txt"),
              QDir::toNativeSeparators(QDir(sample.documentFolder()).filePath("inv0000002.txt")))
        << "a given name wins over the item's file row";

    EXPECT_EQ(locator.locate("no-such-file.txt"), DocumentLocator::NotFound);
    EXPECT_EQ(locator.locate(QString()), DocumentLocator::NotFound);
    EXPECT_EQ(locator.locateItem(999999, QString()), DocumentLocator::NotFound);
    // A name with a folder part must not reach outside the document folders.
    EXPECT_EQ(locator.locate("../Invoices.ini"), DocumentLocator::NotFound);
    EXPECT_EQ(locator.locate(sample.initFilePath()), DocumentLocator::NotFound);
    EXPECT_EQ(locator.locate(".."), DocumentLocator::NotFound);
}

TEST(DocumentLocator, SearchesBelowEachFolderAfterLookingDirectlyInAll) {
    vx::test::TestEnvironment environment;
    const QString nested = environment.writeFile("store/2024/march/scan.pdf", "nested");
    const QString direct = environment.writeFile("second/scan.pdf", "direct");
    const DocumentLocator locator({environment.filePath("store"), environment.filePath("second")});
    EXPECT_EQ(locator.locate("scan.pdf"), QDir::toNativeSeparators(direct))
        << "a file directly in a later folder comes before one deep in an earlier folder";
    ASSERT_TRUE(QFile::remove(direct));
    EXPECT_EQ(locator.locate("scan.pdf"), QDir::toNativeSeparators(nested));
    EXPECT_EQ(locator.locate("march"), DocumentLocator::NotFound) << "folders are not documents";
}

// Names and files someone else put into the shared folders.
TEST(DocumentLocator, NeitherPatternsNorLinksOutOfTheFoldersFindADocument) {
    vx::test::TestEnvironment environment;
    environment.writeFile("store/2024/report.pdf", "someone's document");
    const QString secret = environment.writeFile("home/secret.key", "private");
    const QString beside = environment.writeFile("store/original.pdf", "scan");
    ASSERT_TRUE(QFile::link(secret, environment.filePath("store/planted.pdf")));
    ASSERT_TRUE(QFile::link(secret, environment.filePath("store/2024/deeper.pdf")));
    ASSERT_TRUE(QFile::link(beside, environment.filePath("store/alias.pdf")));
    const DocumentLocator locator(QStringList{environment.filePath("store")});
    for (const char* name :
         {"*", "*.pdf", "rep?rt.pdf", "[r]eport.pdf", "planted.pdf", "deeper.pdf", "nul"})
        EXPECT_EQ(locator.locate(name), DocumentLocator::NotFound) << name;
    EXPECT_EQ(locator.locate("alias.pdf"),
              QDir::toNativeSeparators(environment.filePath("store/alias.pdf")))
        << "a link to a file beside it stays the repository's";
    EXPECT_EQ(locator.locate("report.pdf"),
              QDir::toNativeSeparators(environment.filePath("store/2024/report.pdf")));
}

} // namespace
