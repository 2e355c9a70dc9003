#include "data/Recordset.h"
#include "support/EngineDatabase.h"

using namespace vx;
using namespace vx::test;
using namespace Qt::StringLiterals;

namespace {

class PostgresTableDirect : public PostgresDatabase {
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

TEST_F(PostgresTableDirect, ColumnsAreThoseOfAFullRead) {
    Connection connection = connect();
    Recordset streamed = openForwardOnly("items", connection);
    Recordset full;
    full.open("items", connection, CursorType::Keyset, LockType::Optimistic,
              CommandType::TableDirect);
    ASSERT_EQ(streamed.fieldCount(), full.fieldCount());
    for (int i = 0; i < full.fieldCount(); ++i) {
        const ColumnInfo& a = streamed.columnInfo(i);
        const ColumnInfo& b = full.columnInfo(i);
        SCOPED_TRACE(b.name.toStdString());
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.type, b.type);
        EXPECT_EQ(a.definedSize, b.definedSize);
        EXPECT_EQ(a.keyColumn, b.keyColumn);
    }
}

TEST_F(PostgresTableDirect, AForwardOnlyReadReturnsEveryRowAcrossWritesBetweenPieces) {
    Connection connection = connect();
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

TEST_F(PostgresTableDirect, RowsAddedWithoutReadingReachTheTable) {
    Connection connection = connect();
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
