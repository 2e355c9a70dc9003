#include "companions/StoredDocument.h"

#include "companions/StagingFolder.h"
#include "data/Error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace vx::test {
namespace {

class StoredDocumentTest : public ::testing::Test {
protected:
    QTemporaryDir root;
    QDir folder{root.filePath(QStringLiteral("documents"))};
    QString source;

    void SetUp() override {
        QDir().mkpath(folder.path());
        source = root.filePath(QStringLiteral("scan.pdf"));
        write(source, "the document");
    }
    static void write(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }
    // Every entry of the folder, hidden ones too.
    QStringList entries() const {
        QStringList names = folder.entryList(QDir::Files | QDir::Hidden | QDir::System);
        names.sort();
        return names;
    }
};

TEST_F(StoredDocumentTest, TakesTheFirstFreeStoredNameWithinTwentyCharacters) {
    struct Case {
        qint32 itemId;
        QString extension;
        QStringList existing;
        QString expected;
    };
    const Case cases[] = {
        {17, "pdf", {}, "17.pdf"},
        {17, "pdf", {"17.pdf"}, "17_1.pdf"},
        {17, "pdf", {"17.pdf", "17_1.pdf", "17_2.pdf"}, "17_3.pdf"},
        {17, "", {}, "17"},
        {123456789, "spreadsheet", {}, "123456789.spreadshee"},
        {123456789, "spreadsheet", {"123456789.spreadshee"}, "123456789_1.spreadsh"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected.toStdString());
        for (const QString& name : c.existing)
            write(folder.filePath(name), "someone else's");
        {
            StoredDocument document(folder, source);
            EXPECT_EQ(document.placeAs(c.itemId, c.extension), c.expected);
            EXPECT_EQ(read(folder.filePath(c.expected)), "the document");
            document.keep();
        }
        QStringList expected = c.existing;
        expected << c.expected;
        expected.sort();
        EXPECT_EQ(entries(), expected); // no working copy left beside it
        for (const QString& name : c.existing)
            EXPECT_EQ(read(folder.filePath(name)), "someone else's");
        for (const QString& name : entries())
            QFile::remove(folder.filePath(name));
    }
}

TEST_F(StoredDocumentTest, AWithdrawnNameIsFreeAgainAndTheCopyMovesToTheNextIds) {
    StoredDocument document(folder, source);
    EXPECT_EQ(document.placeAs(5, "pdf"), "5.pdf");
    document.withdraw();
    EXPECT_FALSE(QFile::exists(folder.filePath("5.pdf")));
    EXPECT_EQ(entries().size(), 1); // the copy, under its working name
    EXPECT_EQ(document.placeAs(6, "pdf"), "6.pdf");
    // Placing again without withdrawing first gives the earlier name up as well.
    EXPECT_EQ(document.placeAs(7, "pdf"), "7.pdf");
    EXPECT_EQ(entries(), QStringList{"7.pdf"});
    EXPECT_EQ(read(folder.filePath("7.pdf")), "the document");
}

TEST_F(StoredDocumentTest, ACopyWrittenInTheSessionsStagingFolderMovesInAndBackOut) {
    auto staged = [](const QString& path) {
        return QDir(path).entryList(QDir::Files | QDir::Hidden).size();
    };
    {
        StagingFolder staging;
        const QString path = staging.in(folder);
        EXPECT_EQ(QFileInfo(QFileInfo(path).absolutePath()).absolutePath(), folder.absolutePath());
        {
            StoredDocument document(folder, source, path);
            EXPECT_EQ(staged(path), 1);
            EXPECT_EQ(document.placeAs(3, "pdf"), "3.pdf");
            EXPECT_EQ(staged(path), 0);
            document.withdraw();
            EXPECT_EQ(staged(path), 1);
            EXPECT_FALSE(QFile::exists(folder.filePath("3.pdf")));
            EXPECT_EQ(document.placeAs(4, "pdf"), "4.pdf");
            document.keep();
        }
        EXPECT_EQ(staging.in(folder), path); // one folder for the whole session
    }
    // The session's folder goes with it.
    EXPECT_EQ(folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{"4.pdf"});
}

TEST_F(StoredDocumentTest, NothingStaysWhenTheFilingDoesNotKeepItOrCannotStart) {
    {
        StoredDocument unplaced(folder, source);
        EXPECT_EQ(entries().size(), 1);
    }
    EXPECT_TRUE(entries().isEmpty());
    {
        StoredDocument placed(folder, source);
        placed.placeAs(9, "pdf");
    }
    EXPECT_TRUE(entries().isEmpty());
    EXPECT_THROW(StoredDocument(folder, root.filePath("absent.pdf")), Error);
    EXPECT_TRUE(entries().isEmpty());
    EXPECT_THROW(StoredDocument(QDir(root.filePath("no-such-folder")), source), Error);
}

} // namespace
} // namespace vx::test
