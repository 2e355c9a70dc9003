#include "data/Error.h"
#include "data/Recordset.h"
#include "support/EngineDatabase.h"
#include "support/SameColumns.h"

using namespace vx;
using namespace vx::test;
using namespace Qt::StringLiterals;

namespace {

// A table of 3000 rows, read a piece at a time and written by several sessions.
class PostgresWrite : public PostgresDatabase {
protected:
    void SetUp() override {
        PostgresDatabase::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        driver().execute(u"CREATE TABLE Items ([itemid] LONG NOT NULL, [idx_date] DATETIME, "
                         "[UserName] VARCHAR(50), [amount] DOUBLE, [paid] YESNO, [notes] LONGTEXT, "
                         "CONSTRAINT [pk_Items] PRIMARY KEY ([itemid]))"_s);
        driver().execute(
            u"INSERT INTO Items (itemid, UserName, paid) SELECT n, 'u' || n, "
            "CASE WHEN n % 2 = 1 THEN -1 ELSE 0 END FROM generate_series(1, 3000) n"_s);
    }

    static Recordset openForwardOnly(const QString& table, const Connection& connection) {
        Recordset set;
        set.open(table, connection, CursorType::ForwardOnly, LockType::Optimistic,
                 CommandType::TableDirect);
        return set;
    }
};

} // namespace

TEST_F(PostgresWrite, ColumnsAreThoseOfAFullRead) {
    Recordset streamed = openForwardOnly("items", connection);
    Recordset full;
    full.open("items", connection, CursorType::Keyset, LockType::Optimistic,
              CommandType::TableDirect);
    expectSameColumns(streamed, full, false);
}

TEST_F(PostgresWrite, AForwardOnlyReadReturnsEveryRowAcrossWritesBetweenPieces) {
    Recordset set = openForwardOnly("items", connection);
    Connection writer = connect();
    int expected = 1;
    for (; !set.eof(); set.moveNext(), ++expected) {
        ASSERT_EQ(set.value("itemid"), QVariant(expected));
        ASSERT_EQ(set.value("username"), QVariant(u"u%1"_s.arg(expected)));
        ASSERT_EQ(set.value("paid"), QVariant(expected % 2 == 1));
        if (expected == 100) {
            // A transaction of the reader's own between pieces leaves the cursor usable.
            Transaction transaction(connection);
            connection.execute(u"UPDATE Items SET notes = 'seen' WHERE itemid = 1"_s);
            transaction.commit();
        }
    }
    EXPECT_EQ(expected, 3001);
}

TEST_F(PostgresWrite, RowsAddedWithoutReadingReachTheTable) {
    Recordset set = openForwardOnly("items", connection);
    for (const int id : {5001, 5002}) {
        set.addNew();
        set.setValue("itemid", id);
        set.setValue("UserName", u"new%1"_s.arg(id));
        set.setValue("paid", 0);
        set.update();
    }
    EXPECT_EQ(set.recordCount(), 2);
    set.close();
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM Items"_s), 3002);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM Items WHERE UserName = 'new5002'"_s), 1);
}

TEST_F(PostgresWrite, AnAllOrNothingTransactionEndsWholeAtItsFirstFailure) {
    const QString insert = u"INSERT INTO Items (itemid, UserName) VALUES (%1, '%2')"_s;
    driver().beginAllOrNothingTransaction();
    driver().execute(insert.arg(5001).arg(u"kept?"));
    expectError([&] { driver().execute(u"INSERT INTO Missing VALUES (1)"_s); },
                ErrorNumber::TableNotFound);
    // Nothing more runs in it, and its earlier statements go with it.
    EXPECT_THROW(driver().execute(insert.arg(5002).arg(u"after")), Error);
    driver().rollbackTransaction();
    EXPECT_EQ(count(u"SELECT count(*) FROM Items WHERE UserName IN ('kept?', 'after')"_s), 0);

    driver().beginAllOrNothingTransaction();
    driver().execute(insert.arg(5003).arg(u"whole"));
    driver().commitTransaction();
    driver().beginTransaction();
    expectError([&] { driver().execute(u"INSERT INTO Missing VALUES (1)"_s); },
                ErrorNumber::TableNotFound);
    driver().execute(insert.arg(5004).arg(u"guarded"));
    driver().commitTransaction();
    EXPECT_EQ(count(u"SELECT count(*) FROM Items WHERE UserName IN ('whole', 'guarded')"_s), 2);
}

TEST_F(PostgresWrite, TwoConnectionsShareTheTableWithoutLosingWrites) {
    Connection writer = connect();
    Connection editor = connect();
    const QString rows = u"SELECT count(*) FROM Items"_s;
    writer.driver().beginTransaction();
    for (int i = 1; i <= 50; ++i)
        writer.driver().insertRow(u"Items"_s, {u"itemid"_s}, {5000 + i}, {});
    // The other connection is not held up by the open transaction and does not see its rows.
    EXPECT_EQ(editor.driver().updateRow(u"Items"_s, {u"amount"_s}, {7.5}, {u"itemid"_s}, {1}), 1);
    EXPECT_EQ(editor.driver().select(rows)->value(0, 0).toInt(), 3000);
    writer.driver().commitTransaction();
    EXPECT_EQ(editor.driver().select(rows)->value(0, 0).toInt(), 3050);
    EXPECT_EQ(count(u"SELECT count(*) FROM Items WHERE amount = 7.5"_s), 1);
}
