#include "ScratchDatabase.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace vx::test {
namespace {

TEST(SqliteWrite, RepeatedInsertsOutliveTheStatementCacheAndReopening) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    connection.execute("CREATE TABLE target (a LONG)");
    const QStringList columns{"a"};
    connection.driver().insertRow("target", columns, {1}, {});
    // More statement shapes than the cache keeps, then the same insert again.
    for (int i = 0; i < 60; ++i) {
        const QString table = u"other%1"_s.arg(i);
        connection.execute(u"CREATE TABLE %1 (a LONG)"_s.arg(table));
        EXPECT_EQ(connection.driver().deleteRow(table, columns, {i}), 0);
    }
    connection.driver().insertRow("target", columns, {2}, {});
    connection.close();
    connection = scratch.connect();
    connection.driver().insertRow("target", columns, {3}, {});
    EXPECT_EQ(connection.driver().select("SELECT sum(a) FROM target")->integerAt(0, 0), 6);
}

// Inserts a row through a connection of its own; what failed, empty when it worked.
QString insertElsewhere(const ScratchDatabase& scratch, const QString& extra,
                        std::atomic_bool* opened = nullptr) {
    QString failure;
    try {
        Connection second;
        second.open(scratch.connectionText() + extra);
        if (opened)
            *opened = true;
        second.execute("INSERT INTO t VALUES (2)");
    } catch (const Error& error) {
        failure = error.description();
    }
    if (opened)
        *opened = true;
    return failure;
}

// A second writer waits for the first one's transaction instead of failing, as long as its
// busy timeout lasts.
TEST(SqliteWrite, ASecondWriterWaitsForTheFirst) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    connection.execute("CREATE TABLE t (a LONG)");
    const QString rows = "SELECT count(*) FROM t";
    connection.beginTrans();
    connection.execute("INSERT INTO t VALUES (1)");
    std::atomic_bool opened = false;
    QString failure;
    std::thread writer([&] { failure = insertElsewhere(scratch, {}, &opened); });
    while (!opened)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    connection.commitTrans();
    writer.join();
    EXPECT_TRUE(failure.isEmpty()) << failure.toStdString();
    EXPECT_EQ(connection.driver().select(rows)->integerAt(0, 0), 2);

    // Without a timeout the same write fails at once, so the wait above was the timeout's doing;
    // a short timeout gives up once it has passed, whoever still holds the lock.
    connection.beginTrans();
    for (const char* extra : {";Busy Timeout=0", ";Busy Timeout=100"}) {
        failure = insertElsewhere(scratch, QString::fromLatin1(extra));
        EXPECT_TRUE(failure.contains(u"locked")) << extra << ": " << failure.toStdString();
    }
    connection.rollbackTrans();
    EXPECT_EQ(connection.driver().select(rows)->integerAt(0, 0), 2);
}

} // namespace
} // namespace vx::test
