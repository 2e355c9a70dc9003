#include "data/sqlite/SqliteWriterGate.h"

#include "ScratchDatabase.h"

#include <QFile>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace vx::test {
namespace {

#ifdef __linux__

using sqlite::WriterGate;

// One thread in at a time; a holder that ends without leaving hands the gate on; the file
// goes with the last connection.
TEST(SqliteWriterGate, LetsOneWriterInAtATimeAndOutlivesAHolderThatDied) {
    ScratchDatabase scratch;
    const QString gateFile = scratch.databasePath() + "-gate";
    Connection connection = scratch.connect();
    EXPECT_TRUE(QFile::exists(gateFile));

    WriterGate first;
    WriterGate second;
    first.open(scratch.databasePath());
    second.open(scratch.databasePath());
    ASSERT_TRUE(first.isOpen() && second.isOpen());
    ASSERT_TRUE(first.enter(1000));
    std::thread([&] { EXPECT_FALSE(second.enter(50)) << "the first is in"; }).join();
    first.leave();
    std::thread([&] {
        EXPECT_TRUE(second.enter(1000));
        // Ends without leaving, as a crashing writer would.
    }).join();
    WriterGate third;
    third.open(scratch.databasePath());
    std::thread([&] {
        EXPECT_TRUE(third.enter(1000)) << "a dead holder's gate is taken over";
        third.leave();
    }).join();

    first.close();
    second.close();
    third.close();
    EXPECT_TRUE(QFile::exists(gateFile)) << "still in use by the connection";
    connection.close();
    EXPECT_FALSE(QFile::exists(gateFile));
}

// A gate file spoilt by anyone is set up afresh by the first user, and one spoilt while in use
// is left aside: writing goes on under the engine's own lock.
TEST(SqliteWriterGate, ASpoiltGateNeverStopsWriting) {
    ScratchDatabase scratch;
    const QString gateFile = scratch.databasePath() + "-gate";
    auto spoil = [&](const QByteArray& bytes) {
        QFile file(gateFile);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.write(bytes);
    };
    scratch.connect().close();
    spoil("garbage");
    Connection connection = scratch.connect(";Busy Timeout=300");
    connection.execute("CREATE TABLE t (a LONG)");
    WriterGate probe;
    probe.open(scratch.databasePath());
    EXPECT_TRUE(probe.isOpen()) << "the first user sets a spoilt file up again";
    probe.close();

    // A gate held by a thread that writes nothing: each transaction waits its timeout at most,
    // then the engine's lock, free, lets it through.
    std::atomic_bool release = false;
    std::atomic_int holding = -1;
    std::thread holder([&] {
        WriterGate stuck;
        stuck.open(scratch.databasePath());
        holding = stuck.enter(1000) ? 1 : 0;
        while (!release)
            std::this_thread::yield();
        stuck.leave();
    });
    while (holding < 0)
        std::this_thread::yield();
    EXPECT_EQ(holding, 1);
    for (int value : {1, 2}) {
        connection.beginTrans();
        connection.execute(u"INSERT INTO t VALUES (%1)"_s.arg(value));
        connection.commitTrans();
    }
    release = true;
    holder.join();

    WriterGate user;
    user.open(scratch.databasePath());
    ASSERT_TRUE(user.isOpen());
    spoil(QByteArray(8, 'x')); // the layout's name overwritten while in use
    probe.open(scratch.databasePath());
    EXPECT_FALSE(probe.isOpen());
    Connection other = scratch.connect();
    other.beginTrans();
    other.execute("INSERT INTO t VALUES (3)");
    other.commitTrans();
    EXPECT_EQ(connection.driver().select("SELECT sum(a) FROM t")->integerAt(0, 0), 6);
}

#endif

} // namespace
} // namespace vx::test
