#include "FakeDriver.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "support/SameColumns.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;
using namespace vx::test;
using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<RowStore> threeWords() {
    return makeStore({column("id", DataType::Integer, "words", true),
                      column("word", DataType::VarWChar, "words", false, 20)},
                     {{1, "pear"}, {2, "apple"}, {3, "fig"}});
}

Recordset openForAppend(const QString& table, const Connection& connection) {
    Recordset set;
    set.open(table, connection, CursorType::ForwardOnly, LockType::Optimistic,
             CommandType::TableDirect);
    return set;
}

} // namespace

TEST(TableDirect, AddingRowsNeverReadsTheTableAndReadingAddsAfterTheLastRow) {
    Connection connection = FakeDriver::connect();
    FakeDriver& fake = FakeDriver::of(connection);
    fake.setResult("words", threeWords);

    Recordset adding = openForAppend("words", connection);
    EXPECT_EQ(adding.field("word").definedSize(), 20);
    for (const char* word : {"kiwi", "plum"}) {
        adding.addNew();
        adding.setValue("id", 9);
        adding.setValue("word", word);
        adding.update();
    }
    EXPECT_EQ(fake.selects, 0);
    EXPECT_EQ(fake.structureReads, 1);
    ASSERT_EQ(fake.calls.size(), 2);
    EXPECT_EQ(fake.calls[1].kind, WriteCall::Insert);
    EXPECT_EQ(fake.calls[1].values, (QVariantList{9, "plum"}));

    Recordset reading = openForAppend("words", connection);
    ASSERT_FALSE(reading.eof());
    EXPECT_EQ(reading.value("word"), QVariant("pear"));
    reading.moveNext();
    reading.addNew(); // the rows not yet read come first
    reading.setValue("id", 4);
    reading.update();
    EXPECT_EQ(reading.recordCount(), 4);
    EXPECT_EQ(reading.position(), 3);
    EXPECT_EQ(fake.selects, 1);
}

namespace {

// A repository file with a table of every declared type the repository uses.
struct SqliteTableDirect : ::testing::Test {
    QTemporaryDir folder;
    Connection connection;

    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        connection.open(u"Provider=SQLite;Data Source=%1;Create If Missing=True"_s.arg(
            folder.filePath("repository.db")));
        connection.execute("CREATE TABLE items (itemid LONG NOT NULL, idx_date DATETIME, "
                           "username VARCHAR(50), amount DOUBLE, small SHORT, paid YESNO, "
                           "notes LONGTEXT, code CHAR(8), CONSTRAINT pk_items PRIMARY KEY "
                           "(itemid))");
    }

    void fill(int rows) {
        Transaction transaction(connection);
        for (int i = 1; i <= rows; ++i)
            connection.execute(
                u"INSERT INTO items (itemid, username, paid) VALUES (%1, 'u%1', %2)"_s.arg(i).arg(
                    i % 2 ? -1 : 0));
        transaction.commit();
    }
};

} // namespace

TEST_F(SqliteTableDirect, ColumnsAreThoseOfAFullReadAndAMissingTableFailsAtOpen) {
    for (const int rows : {0, 3}) {
        fill(rows);
        Recordset streamed = openForAppend("items", connection);
        Recordset full;
        full.open("items", connection, CursorType::Keyset, LockType::Optimistic,
                  CommandType::TableDirect);
        expectSameColumns(streamed, full);
        EXPECT_TRUE(streamed.supports(CursorOption::AddNew));
    }
    EXPECT_EQ(errorNumberOf([&] { openForAppend("nothing", connection); }),
              ErrorNumber::TableNotFound);
}

TEST_F(SqliteTableDirect, AForwardOnlyReadReturnsEveryRowInTableOrder) {
    // More rows than the first pieces hold, so that several pieces are read.
    const int rows = 5000;
    fill(rows);
    Recordset set = openForAppend("items", connection);
    int expected = 1;
    for (; !set.eof(); set.moveNext(), ++expected) {
        ASSERT_EQ(set.value("itemid"), QVariant(expected));
        ASSERT_EQ(set.value("username"), QVariant(u"u%1"_s.arg(expected)));
        ASSERT_EQ(set.value("paid"), QVariant(expected % 2 == 1));
    }
    EXPECT_EQ(expected, rows + 1);
    EXPECT_EQ(set.recordCount(), rows);
}

TEST_F(SqliteTableDirect, RowsAddedWithoutReadingReachTheTable) {
    fill(2);
    Recordset set = openForAppend("items", connection);
    set.addNew();
    set.setValue("itemid", 7);
    set.setValue("username", "new");
    set.setValue("idx_date", QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)));
    set.update();
    EXPECT_EQ(set.recordCount(), 1) << "the record set holds only what it added";
    set.close();

    Recordset check;
    check.open("select itemid, username, idx_date from items order by itemid", connection);
    QStringList seen;
    for (; !check.eof(); check.moveNext())
        seen << check.value(0).toString() + '|' + check.value(1).toString() + '|' +
                    check.value(2).toDateTime().toString(Qt::ISODate);
    EXPECT_EQ(seen, (QStringList{"1|u1|", "2|u2|", "7|new|2024-05-06T07:08:09"}));
}
