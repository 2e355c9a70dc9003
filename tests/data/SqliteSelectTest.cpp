#include "ScratchDatabase.h"
#include "data/DataType.h"

#include <gtest/gtest.h>

namespace vx::test {
namespace {

class SqliteSelect : public ::testing::Test {
protected:
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    Driver& driver = connection.driver();
};

TEST_F(SqliteSelect, DeclaredTypesGiveFieldTypesSizesAndValues) {
    connection.execute(QStringLiteral(
        "CREATE TABLE typed (a LONG, b SHORT, c DOUBLE, d CURRENCY, e DATETIME, f YESNO, "
        "g VARCHAR(50), h CHAR(10), i LONGTEXT, j MEMO, k TEXT(20), m TIMESTAMP, n BIT)"));
    connection.execute(QStringLiteral(
        "INSERT INTO typed VALUES (70000, -3, 2.5, 19.99, #03/15/2024 10:30:00#, TRUE, 'abc', "
        "'fixed', 'long', 'memo', 'short', '2024-01-02T03:04:05', FALSE)"));
    const auto rows = driver.select("SELECT * FROM typed");
    const struct {
        DataType type;
        qint32 size;
    } expected[] = {
        {DataType::Integer, 4},      {DataType::SmallInt, 2},  {DataType::Double, 8},
        {DataType::Currency, 8},     {DataType::Date, 8},      {DataType::Boolean, 2},
        {DataType::VarWChar, 50},    {DataType::WChar, 10},    {DataType::LongVarWChar, 0},
        {DataType::LongVarWChar, 0}, {DataType::VarWChar, 20}, {DataType::DBTimeStamp, 16},
        {DataType::Boolean, 2}};
    ASSERT_EQ(rows->columnCount(), 13);
    for (int i = 0; i < 13; ++i) {
        EXPECT_EQ(rows->columns()[i].type, expected[i].type) << i;
        EXPECT_EQ(rows->columns()[i].definedSize, expected[i].size) << i;
        EXPECT_EQ(rows->columns()[i].baseTable, u"typed");
    }
    ASSERT_EQ(rows->rowCount(), 1);
    EXPECT_EQ(rows->value(0, 0).toInt(), 70000);
    EXPECT_EQ(rows->value(0, 1).toInt(), -3);
    EXPECT_EQ(rows->value(0, 4).toDateTime(), QDateTime(QDate(2024, 3, 15), QTime(10, 30)));
    EXPECT_EQ(rows->value(0, 5).toBool(), true);
    EXPECT_EQ(rows->value(0, 12).toBool(), false);
    EXPECT_EQ(rows->value(0, 6).toString(), u"abc");
    EXPECT_EQ(rows->value(0, 11).toDateTime(), QDateTime(QDate(2024, 1, 2), QTime(3, 4, 5)));
}

TEST_F(SqliteSelect, ComputedColumnsTakeTheirTypeFromTheFirstValue) {
    connection.execute("CREATE TABLE t (a LONG, s VARCHAR(10))");
    connection.execute("INSERT INTO t VALUES (NULL, 'x'), (4, 'y')");
    const auto rows = driver.select(QStringLiteral(
        "SELECT count(*) AS n, a * 2 AS twice, 5000000000 AS big, 1.5 AS r, s || '!' AS t, "
        "NULL AS empty FROM t GROUP BY a ORDER BY a"));
    const auto& columns = rows->columns();
    // "twice" takes its type from the second row: the first row's value is null.
    const DataType types[] = {DataType::Integer, DataType::Integer,  DataType::BigInt,
                              DataType::Double,  DataType::VarWChar, DataType::VarWChar};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(columns[i].type, types[i]) << i;
    EXPECT_EQ(columns[4].definedSize, 255);
    EXPECT_TRUE(columns[1].baseTable.isEmpty());
    ASSERT_EQ(rows->rowCount(), 2);
    EXPECT_TRUE(rows->isNull(0, 1));
    EXPECT_EQ(rows->value(1, 1).toInt(), 8);
    EXPECT_EQ(rows->value(0, 2).toLongLong(), 5000000000LL);
    EXPECT_EQ(rows->value(1, 4).toString(), u"y!");
}

TEST_F(SqliteSelect, KeysAndAutoIncrementComeFromTheTable) {
    connection.execute(QStringLiteral(
        "CREATE TABLE declared (id LONG, v LONG, CONSTRAINT [pk_declared] PRIMARY KEY (id))"));
    connection.execute("CREATE TABLE jetkeyed (id LONG, v LONG)");
    connection.execute("CREATE UNIQUE INDEX pk_index ON jetkeyed (id) WITH PRIMARY");
    connection.execute("CREATE TABLE counted (id COUNTER, v LONG)");
    connection.execute("CREATE TABLE loose (id LONG, v LONG)");
    for (const char* table : {"declared", "jetkeyed", "counted", "loose"}) {
        const auto rows = driver.select(u"SELECT id, v FROM "_s + table);
        const bool keyed = qstrcmp(table, "loose") != 0;
        EXPECT_EQ(rows->columns()[0].keyColumn, keyed) << table;
        EXPECT_FALSE(rows->columns()[1].keyColumn) << table;
        EXPECT_EQ(rows->columns()[0].autoIncrement, qstrcmp(table, "counted") == 0) << table;
        EXPECT_EQ(rows->columns()[0].type, DataType::Integer) << table;
    }
}

TEST_F(SqliteSelect, RepeatedNamesTakeTheTableAsTheQuerySpellsIt) {
    connection.execute("CREATE TABLE Invoices (itemid LONG, Customer TEXT(50))");
    connection.execute("CREATE TABLE KTItem (itemid LONG, username TEXT(50))");
    connection.execute("INSERT INTO Invoices VALUES (1, 'Acme')");
    connection.execute("INSERT INTO ktitem VALUES (1, 'bob')");
    const auto rows = driver.select(QStringLiteral(
        "SELECT * FROM Invoices INNER JOIN ktitem ON Invoices.itemid = ktitem.itemid"));
    QStringList names;
    for (const auto& column : rows->columns())
        names << column.name;
    EXPECT_EQ(names, (QStringList{"Invoices.itemid", "Customer", "ktitem.itemid", "username"}));
    EXPECT_EQ(rows->columns()[2].baseTable, u"KTItem");
    EXPECT_EQ(rows->columns()[2].baseColumn, u"itemid");
}

TEST_F(SqliteSelect, NamesAndTextCompareWithoutRegardToCase) {
    connection.execute("CREATE TABLE KTUsers (UserID LONG, UserName VARCHAR(50), Notes LONGTEXT)");
    connection.execute(QStringLiteral("INSERT INTO ktusers (USERID, username, notes) "
                                      "VALUES (1, 'Bob', 'Red'), (2, 'alice', 'blue')"));
    auto rows =
        driver.select("SELECT userid FROM KTUSERS WHERE UserName = 'BOB' OR notes IN ('BLUE')");
    EXPECT_EQ(rows->rowCount(), 2);
    EXPECT_EQ(rows->columns()[0].baseColumn, u"UserID");
    rows = driver.select("SELECT * FROM KTUsers ORDER BY username");
    EXPECT_EQ(rows->value(0, 1).toString(), u"alice");
    rows = driver.selectTable("[ktusers]");
    EXPECT_EQ(rows->rowCount(), 2);
    EXPECT_EQ(rows->columns()[1].name, u"UserName");
}

TEST_F(SqliteSelect, EngineErrorsKeepThePlatformsNumbers) {
    connection.execute("CREATE TABLE t (id LONG PRIMARY KEY, v LONG)");
    connection.execute("INSERT INTO t VALUES (1, 1)");
    EXPECT_EQ(errorOf([&] { driver.select("select * from KTRevision where itemid=1"); },
                      ErrorNumber::TableNotFound),
              u"The database engine cannot find the input table or query 'KTRevision'. Make sure "
              u"it exists and that its name is spelled correctly.");
    errorOf([&] { driver.selectTable("nothere"); }, ErrorNumber::TableNotFound);
    errorOf([&] { connection.execute("DELETE FROM gone"); }, ErrorNumber::TableNotFound);
    EXPECT_TRUE(errorOf([&] { driver.select("SELEC * FROM t"); }, ErrorNumber::SyntaxError)
                    .contains(u"syntax error"));
    errorOf([&] { driver.select("SELECT * FROM t; SELECT 1"); }, ErrorNumber::SyntaxError);
    errorOf([&] { connection.execute("INSERT INTO t VALUES (1, 2)"); },
            ErrorNumber::IntegrityViolation);
    errorOf([&] { driver.select("SELECT nope FROM t"); }, ErrorNumber::ColumnNotFound);
}

} // namespace
} // namespace vx::test
