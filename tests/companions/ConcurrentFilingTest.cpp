#include "FilingUser.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "portable/QueryRows.h"
#include "session/IdCounter.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace vx;
using vx::test::rowsOf;

namespace {

// Several filers on one sample repository (SQLite, or PostgreSQL with VX_TEST_ENGINE=postgres),
// each with a connection of its own.
class ConcurrentFilingTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;
    Connection connection;

    void SetUp() override { connection.open(sample.connectionText()); }

    qint64 count(const QString& sql) { return rowsOf(connection, sql).value(0).toLongLong(); }

    // Hidden ones and folders too: a filer's working copy or folder left behind is stray.
    QSet<QString> documentFiles() const {
        const QStringList names = QDir(sample.documentFolder())
                                      .entryList(QDir::Files | QDir::Dirs | QDir::Hidden |
                                                 QDir::System | QDir::NoDotAndDotDot);
        return QSet<QString>(names.begin(), names.end());
    }

    QSet<QString> storedNamesAbove(qint64 fileId) {
        Recordset rows;
        rows.open(QStringLiteral("select fname from KTFile where fileid > %1").arg(fileId),
                  connection);
        QSet<QString> names;
        for (; !rows.eof(); rows.moveNext())
            names.insert(rows.value(0).toString());
        return names;
    }

    // Files `documents` documents as a user of its own; returns the ids it got.
    std::vector<qint32> fileDocuments(int filer, int documents) {
        const QString path =
            environment.writeFile(QStringLiteral("incoming/filer%1.txt").arg(filer),
                                  QByteArray("filer ") + char('0' + filer));
        const std::vector<qint32> ids = test::fileAsAnotherUser(
            path, QStringLiteral("filer%1").arg(filer), QStringLiteral("concurrent"),
            [&](int filed) { return filed < documents; },
            [&](VXScanIndex& api, int n) {
                QString column = QStringLiteral("InvoiceNo");
                api.SetFieldContent(column, QStringLiteral("F%1-%2").arg(filer).arg(n));
            });
        EXPECT_EQ(std::count(ids.begin(), ids.end(), 0), 0) << "filings refused";
        return ids;
    }
};

} // namespace

TEST_F(ConcurrentFilingTest, EightFilersAtOnceFileEveryDocumentUnderIdsAndNamesOfItsOwn) {
    const int filers = 8;
    const int documents = 12;
    const qint64 lastItem = count(QStringLiteral("select max(itemid) from KTItem"));
    const qint64 lastFile = count(QStringLiteral("select max(fileid) from KTFile"));
    const QSet<QString> filesBefore = documentFiles();

    std::vector<std::vector<qint32>> ids(filers);
    std::vector<std::thread> threads;
    for (int filer = 0; filer < filers; ++filer)
        threads.emplace_back([&, filer] { ids[size_t(filer)] = fileDocuments(filer, documents); });
    for (std::thread& thread : threads)
        thread.join();

    QSet<qint32> distinct;
    for (const auto& filerIds : ids)
        for (const qint32 id : filerIds)
            distinct.insert(id);
    EXPECT_EQ(distinct.size(), filers * documents);
    EXPECT_FALSE(distinct.contains(0));

    const QString newItems = QStringLiteral(" from KTItem where itemid > %1").arg(lastItem);
    EXPECT_EQ(count("select count(*)" + newItems), filers * documents);
    EXPECT_EQ(count("select count(*) from KTFile where fileid > " + QString::number(lastFile)),
              filers * documents);
    EXPECT_EQ(count("select count(*) from keywords where keyword = 'concurrent'"),
              filers * documents);
    // One stored file per file row, each holding its filer's document, and no other new file.
    const QSet<QString> stored = storedNamesAbove(lastFile);
    EXPECT_EQ(stored.size(), filers * documents);
    QSet<QString> added = documentFiles();
    added.subtract(filesBefore);
    EXPECT_EQ(added, stored);
    Recordset files;
    files.open("select KTFile.fname, KTItem.username from KTFile, KTItem where KTFile.itemid = "
               "KTItem.itemid and KTFile.fileid > " +
                   QString::number(lastFile),
               connection);
    for (; !files.eof(); files.moveNext()) {
        QFile copy(QDir(sample.documentFolder()).filePath(files.value(0).toString()));
        ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
        EXPECT_EQ(copy.readAll(), files.value(1).toString().replace("filer", "filer ").toUtf8());
    }
}

TEST_F(ConcurrentFilingTest, AFilerThatLosesTheIdRaceFilesUnderTheNextFreeIds) {
    const std::vector<qint32> first = fileDocuments(1, 1);
    ASSERT_EQ(first.size(), 1u);
    const qint32 id = first.front();
    const qint64 fileId = count(QStringLiteral("select max(fileid) from KTFile"));
    // Another writer takes the next ids without the counter (as the direct commit files under
    // the host's item id): the next filing collides once, then catches up.
    connection.execute(QStringLiteral("INSERT INTO KTItem (itemid, groupid, deleted) VALUES "
                                      "(%1, 1, 0)")
                           .arg(id + 1));
    connection.execute(QStringLiteral("INSERT INTO KTFile (fileid, itemid, fname) VALUES (%1, %2, "
                                      "'elsewhere.txt')")
                           .arg(fileId + 1)
                           .arg(id + 1));

    const std::vector<qint32> next = fileDocuments(2, 1);
    ASSERT_EQ(next.size(), 1u);
    EXPECT_EQ(next.front(), id + 2);
    EXPECT_EQ(count(QStringLiteral("select count(*) from KTFile where itemid = %1").arg(id + 2)),
              1);
    EXPECT_EQ(count(QStringLiteral("select max(fileid) from KTFile")), fileId + 2);
    EXPECT_TRUE(
        QFile::exists(QDir(sample.documentFolder()).filePath(QString::number(id + 2) + ".txt")));
}

TEST_F(ConcurrentFilingTest, ARepositoryWithoutIdSequencesOrCounterRowsContinuesAfterItsIds) {
    // As a repository made before either existed: its ids were taken from the tables' maxima.
    for (const QString& sequence : IdCounter::sequences(connection))
        connection.execute(QStringLiteral("DROP SEQUENCE [%1]").arg(sequence));
    connection.execute(QStringLiteral("DELETE FROM KTCounter"));
    const qint64 lastItem = count(QStringLiteral("select max(itemid) from KTItem"));
    const qint64 lastFile = count(QStringLiteral("select max(fileid) from KTFile"));

    const std::vector<qint32> filed = fileDocuments(3, 2);
    ASSERT_EQ(filed.size(), 2u);
    EXPECT_EQ(filed[0], lastItem + 1);
    EXPECT_EQ(filed[1], lastItem + 2);
    EXPECT_EQ(count(QStringLiteral("select max(fileid) from KTFile")), lastFile + 2);
}
