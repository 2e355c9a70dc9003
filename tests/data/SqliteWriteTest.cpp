#include "ScratchDatabase.h"

#include <QDateTime>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace vx::test {
namespace {

class SqliteWrite : public ::testing::Test {
protected:
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    Driver& driver = connection.driver();

    // What the file holds, as text, whatever the column's type.
    QStringList stored(const QString& sql) {
        const auto rows = driver.select(sql);
        QStringList values;
        for (qsizetype row = 0; row < rows->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < rows->columnCount(); ++column)
                cells << (rows->isNull(row, column) ? u"NULL"_s
                                                    : rows->value(row, column).toString());
            values << cells.join(u'|');
        }
        return values;
    }
};

TEST_F(SqliteWrite, InsertUpdateDeleteByKeyInTheStorageConventions) {
    connection.execute(
        QStringLiteral("CREATE TABLE KTItem (itemid LONG, idx_date DATETIME, username VARCHAR(50), "
                       "deleted YESNO, size DOUBLE, CONSTRAINT pk PRIMARY KEY (itemid))"));
    const QStringList columns{"itemid", "idx_date", "username", "deleted", "size"};
    EXPECT_FALSE(
        driver
            .insertRow("KTItem", columns,
                       {1, QDateTime(QDate(2024, 3, 15), QTime(9, 5, 7)), "bob", true, 1.25}, {})
            .isValid());
    driver.insertRow("ktitem", columns, {2, QDate(2023, 12, 31), "it's", false, QVariant()}, {});
    EXPECT_EQ(stored(QStringLiteral("SELECT idx_date || '', deleted + 0, size FROM KTItem "
                                    "ORDER BY itemid")),
              (QStringList{"2024-03-15 09:05:07|-1|1.25", "2023-12-31 00:00:00|0|NULL"}));

    EXPECT_EQ(driver.updateRow("KTItem", {"username", "deleted"}, {"carol", true}, {"ITEMID"}, {2}),
              1);
    EXPECT_EQ(driver.updateRow("KTItem", {"username"}, {"x"}, {"itemid"}, {99}), 0);
    EXPECT_EQ(driver.deleteRow("KTItem", {"itemid"}, {1}), 1);
    EXPECT_EQ(stored("SELECT itemid, username, deleted + 0 FROM KTItem"),
              QStringList{"2|carol|-1"});

    errorOf([&] { driver.insertRow("KTItem", columns.mid(0, 1), {2}, {}); },
            ErrorNumber::IntegrityViolation);
    errorOf([&] { driver.insertRow("nothere", columns.mid(0, 1), {2}, {}); },
            ErrorNumber::TableNotFound);
}

TEST_F(SqliteWrite, KeylessRowsAreFoundByAllTheirValuesOneAtATime) {
    connection.execute(QStringLiteral("CREATE TABLE keywords (keyword VARCHAR(50), itemid LONG, "
                                      "seen DATETIME)"));
    connection.execute(QStringLiteral("INSERT INTO keywords VALUES ('tax', 1, NULL), ('tax', 1, "
                                      "NULL), ('fee', 2, '2024-03-15')"));
    const QStringList all{"keyword", "itemid", "seen"};
    // Two identical rows: only one of them changes, and a null matches null.
    EXPECT_EQ(driver.updateRow("keywords", {"keyword"}, {"vat"}, all, {"tax", 1, QVariant()}), 1);
    // A date stored without its time still matches the value read back.
    EXPECT_EQ(
        driver.deleteRow("keywords", all, {"fee", 2, QDateTime(QDate(2024, 3, 15), QTime(0, 0))}),
        1);
    EXPECT_EQ(stored("SELECT keyword, itemid FROM keywords ORDER BY keyword"),
              (QStringList{"tax|1", "vat|1"}));
}

TEST_F(SqliteWrite, RepeatedInsertsOutliveTheStatementCacheAndReopening) {
    connection.execute("CREATE TABLE target (a LONG)");
    const QStringList columns{"a"};
    driver.insertRow("target", columns, {1}, {});
    // More statement shapes than the cache keeps, then the same insert again.
    for (int i = 0; i < 60; ++i) {
        const QString table = u"other%1"_s.arg(i);
        connection.execute(u"CREATE TABLE %1 (a LONG)"_s.arg(table));
        EXPECT_EQ(driver.deleteRow(table, columns, {i}), 0);
    }
    driver.insertRow("target", columns, {2}, {});
    connection.close();
    connection = scratch.connect();
    connection.driver().insertRow("target", columns, {3}, {});
    EXPECT_EQ(connection.driver().select("SELECT sum(a) FROM target")->integerAt(0, 0), 6);
}

// A second writer waits for the first one's transaction instead of failing, as long as its
// busy timeout lasts.
TEST_F(SqliteWrite, ASecondWriterWaitsForTheFirst) {
    connection.execute("CREATE TABLE t (a LONG)");

    auto writeFromAnotherConnection = [this](const QString& extra, std::atomic_bool& started,
                                             QString& failure) {
        try {
            Connection second;
            second.open(scratch.connectionText() + extra);
            started = true;
            second.execute("INSERT INTO t VALUES (2)");
        } catch (const Error& error) {
            failure = error.description();
        }
        started = true;
    };

    connection.beginTrans();
    connection.execute("INSERT INTO t VALUES (1)");
    std::atomic_bool started = false;
    QString failure;
    std::thread writer([&] { writeFromAnotherConnection(QString(), started, failure); });
    while (!started)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    connection.commitTrans();
    writer.join();
    EXPECT_TRUE(failure.isEmpty()) << failure.toStdString();
    EXPECT_EQ(stored("SELECT a FROM t ORDER BY a"), (QStringList{"1", "2"}));

    // Without a timeout the same write fails at once, so the wait above was the timeout's doing.
    connection.beginTrans();
    std::atomic_bool impatientStarted = false;
    QString impatientFailure;
    std::thread impatient(
        [&] { writeFromAnotherConnection(";Busy Timeout=0", impatientStarted, impatientFailure); });
    impatient.join();
    EXPECT_TRUE(impatientFailure.contains(u"locked")) << impatientFailure.toStdString();

    // A short timeout gives up once it has passed, whoever still holds the lock.
    std::atomic_bool boundedStarted = false;
    QString boundedFailure;
    std::thread bounded(
        [&] { writeFromAnotherConnection(";Busy Timeout=100", boundedStarted, boundedFailure); });
    bounded.join();
    connection.rollbackTrans();
    EXPECT_TRUE(boundedFailure.contains(u"locked")) << boundedFailure.toStdString();
    EXPECT_EQ(stored("SELECT a FROM t ORDER BY a"), (QStringList{"1", "2"}));
}

} // namespace
} // namespace vx::test
