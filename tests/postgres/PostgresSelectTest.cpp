#include "PostgresFixture.h"

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

using PostgresSelect = PostgresFixture;

QString columnNames(const RowStore& rows) {
    QStringList names;
    for (const auto& column : rows.columns())
        names << column.name;
    return names.join(u'|');
}

TEST_F(PostgresSelect, JetTablesGiveFieldTypesSizesAndValues) {
    driver->execute(QStringLiteral(
        "CREATE TABLE Typed ([a] LONG, [b] SHORT, [c] DOUBLE, [d] CURRENCY, [e] DATETIME, "
        "[f] YESNO, [g] VARCHAR(50), [h] CHAR(10), [i] LONGTEXT, [j] MEMO, [k] TEXT(20), "
        "[m] BIT, [n] COUNTER, [Mixed] LONG)"));
    driver->execute(QStringLiteral(
        "INSERT INTO Typed (a, b, c, d, e, f, g, h, i, j, k, m, mixed) VALUES (70000, -3, 2.5, "
        "19.99, #03/15/2024 10:30:00#, TRUE, 'abc', 'fixed', 'long', 'memo', 'short', FALSE, 1)"));
    driver->execute(u"INSERT INTO Typed (a) VALUES (NULL)"_s);
    const auto rows = driver->select(u"SELECT * FROM typed ORDER BY n"_s);
    const struct {
        DataType type;
        qint32 size;
    } expected[] = {
        {DataType::Integer, 4},      {DataType::SmallInt, 2},  {DataType::Double, 8},
        {DataType::Currency, 8},     {DataType::Date, 8},      {DataType::Boolean, 2},
        {DataType::VarWChar, 50},    {DataType::WChar, 10},    {DataType::LongVarWChar, 0},
        {DataType::LongVarWChar, 0}, {DataType::VarWChar, 20}, {DataType::Boolean, 2},
        {DataType::Integer, 4},      {DataType::Integer, 4}};
    ASSERT_EQ(rows->columnCount(), 14);
    for (int i = 0; i < 14; ++i) {
        EXPECT_EQ(rows->columns()[i].type, expected[i].type) << i;
        EXPECT_EQ(rows->columns()[i].definedSize, expected[i].size) << i;
        EXPECT_EQ(rows->columns()[i].baseTable, u"Typed") << i;
        EXPECT_EQ(rows->columns()[i].autoIncrement, i == 12) << i;
    }
    // The declared spelling comes back, for the name and the base column.
    EXPECT_EQ(rows->columns()[13].name, u"Mixed");
    EXPECT_EQ(rows->columns()[13].baseColumn, u"Mixed");

    ASSERT_EQ(rows->rowCount(), 2);
    EXPECT_EQ(rows->value(0, 0).toInt(), 70000);
    EXPECT_EQ(rows->value(0, 1).toInt(), -3);
    EXPECT_DOUBLE_EQ(rows->value(0, 2).toDouble(), 2.5);
    EXPECT_DOUBLE_EQ(rows->value(0, 3).toDouble(), 19.99);
    EXPECT_EQ(rows->value(0, 4).toDateTime(), QDateTime(QDate(2024, 3, 15), QTime(10, 30)));
    EXPECT_EQ(rows->value(0, 5), QVariant(true));
    EXPECT_EQ(rows->integerAt(0, 5), -1); // Yes/No holds -1, as the repository stores it
    EXPECT_EQ(rows->value(0, 11), QVariant(false));
    EXPECT_EQ(rows->value(0, 7).toString(), u"fixed     "); // CHAR(n) pads, as Jet's does
    EXPECT_EQ(rows->value(0, 10).toString(), u"short");
    EXPECT_EQ(rows->value(1, 12).toInt(), 2);
    for (int i : {0, 1, 2, 4, 5, 6, 8})
        EXPECT_TRUE(rows->isNull(1, i)) << i;
}

TEST_F(PostgresSelect, NativeAndComputedColumnsMapFromTheirTypes) {
    // Quoted type names pass the dialect untouched (unquoted, "date" and "time" are Jet's).
    driver->execute(QStringLiteral(
        "CREATE TABLE native (flag \"bool\", yn yesno, big bigint, r real, amount numeric(10,2), "
        "day \"date\", t \"time\", moment timestamptz, blob bytea, code \"varchar\", "
        "name \"text\")"));
    driver->execute(QStringLiteral(
        "INSERT INTO native VALUES ('t', -1, 5000000000, 1.5, 12.34, '2024-02-29', '10:11:12', "
        "'2024-01-02 03:04:05.678+00', '\\x00ff41', 'x', 'y')"));
    const auto rows = driver->select(QStringLiteral(
        "SELECT n.*, count(*) OVER () AS total, 'lit' AS lit, 1.5::float8 * 2 AS twice, "
        "name || '!' AS shout, big + 0 AS bigger FROM native n"));
    const auto& columns = rows->columns();
    const DataType types[] = {
        DataType::Boolean,       DataType::Boolean,      DataType::BigInt,       DataType::Single,
        DataType::Numeric,       DataType::Date,         DataType::Date,         DataType::Date,
        DataType::LongVarBinary, DataType::LongVarWChar, DataType::LongVarWChar, DataType::Integer,
        DataType::LongVarWChar,  DataType::Double,       DataType::LongVarWChar, DataType::BigInt};
    // A computed count fits 32 bits and reads as the controls expect; a wider value stays wide.
    ASSERT_EQ(columns.size(), 16);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(columns[i].type, types[i]) << i;
    EXPECT_TRUE(columns[11].baseTable.isEmpty());
    ASSERT_EQ(rows->rowCount(), 1);
    EXPECT_EQ(rows->value(0, 0), QVariant(true));
    EXPECT_EQ(rows->value(0, 2).toLongLong(), 5000000000LL);
    EXPECT_DOUBLE_EQ(rows->value(0, 3).toDouble(), 1.5);
    EXPECT_DOUBLE_EQ(rows->value(0, 4).toDouble(), 12.34);
    EXPECT_EQ(rows->value(0, 5).toDateTime(), QDateTime(QDate(2024, 2, 29), QTime(0, 0)));
    // A time alone lies on the zero day.
    EXPECT_EQ(rows->value(0, 6).toDateTime(), QDateTime(QDate(1899, 12, 30), QTime(10, 11, 12)));
    EXPECT_EQ(rows->value(0, 8).toByteArray(), QByteArray("\x00\xff"
                                                          "A",
                                                          3));
    EXPECT_EQ(rows->value(0, 11).toLongLong(), 1);
    EXPECT_EQ(rows->value(0, 12).toString(), u"lit");
    EXPECT_DOUBLE_EQ(rows->value(0, 13).toDouble(), 3.0);
    EXPECT_EQ(rows->value(0, 14).toString(), u"y!");
}

TEST_F(PostgresSelect, KeysRepeatedNamesAndTableDirectOpens) {
    driver->execute(u"CREATE TABLE Invoices ([itemid] LONG, [Customer] TEXT(50))"_s);
    driver->execute(u"CREATE UNIQUE INDEX pk_index ON Invoices (itemid) WITH PRIMARY"_s);
    driver->execute(u"CREATE TABLE KTItem ([itemid] LONG, [username] TEXT(50))"_s);
    driver->execute(u"CREATE UNIQUE INDEX pk_index ON KTItem (itemid) WITH PRIMARY"_s);
    driver->execute(u"CREATE TABLE loose (id LONG, v LONG)"_s);
    driver->execute(u"INSERT INTO Invoices VALUES (1, 'Acme')"_s);
    driver->execute(u"INSERT INTO ktitem VALUES (1, 'bob')"_s);

    const auto rows = driver->select(QStringLiteral(
        "SELECT * FROM Invoices INNER JOIN ktitem ON Invoices.itemid = ktitem.itemid"));
    EXPECT_EQ(columnNames(*rows), u"Invoices.itemid|Customer|ktitem.itemid|username");
    EXPECT_EQ(rows->columns()[2].baseTable, u"KTItem");
    EXPECT_TRUE(rows->columns()[0].keyColumn);
    EXPECT_FALSE(rows->columns()[1].keyColumn);

    for (const QString& spelling : {u"KTITEM"_s, u"[KTItem]"_s}) {
        const auto table = driver->selectTable(spelling);
        EXPECT_EQ(table->rowCount(), 1);
        EXPECT_EQ(table->columns()[1].baseTable, u"KTItem");
    }
    EXPECT_FALSE(driver->selectTable(u"loose"_s)->columns()[0].keyColumn);
}

TEST_F(PostgresSelect, TextComparesSortsAndMatchesWithoutRegardToCase) {
    driver->execute(QStringLiteral(
        "CREATE TABLE KTUsers ([UserID] LONG, [UserName] VARCHAR(50), [Notes] LONGTEXT)"));
    driver->execute(QStringLiteral("INSERT INTO ktusers (USERID, username, notes) VALUES "
                                   "(1, 'Bob', 'Red'), (2, 'alice', 'blue'), (3, 'Carol', NULL)"));
    EXPECT_EQ(driver
                  ->select(QStringLiteral("SELECT userid FROM KTUSERS WHERE [UserName] = 'BOB' "
                                          "OR notes IN ('BLUE')"))
                  ->rowCount(),
              2);
    const auto sorted = driver->select(u"SELECT * FROM KTUsers ORDER BY username"_s);
    ASSERT_EQ(sorted->rowCount(), 3);
    EXPECT_EQ(sorted->value(0, 1).toString(), u"alice");
    EXPECT_EQ(sorted->value(2, 1).toString(), u"Carol");
    const auto matched =
        driver->select(u"SELECT * FROM KTUsers WHERE username LIKE 'B%' OR Notes LIKE '%LU%'"_s);
    EXPECT_EQ(matched->rowCount(), 2);
    // Grouping and distinct see one value in any letter case.
    driver->execute(u"INSERT INTO KTUsers VALUES (4, 'BOB', '')"_s);
    EXPECT_EQ(count(u"SELECT count(DISTINCT username) FROM KTUsers"_s), 3);
}

TEST_F(PostgresSelect, TheControlsStatementsRunAsWritten) {
    for (const char* statement :
         {"CREATE TABLE [Invoices] ([itemid] LONG,[Customer] VARCHAR(50),[Paid] BIT);",
          "CREATE UNIQUE INDEX pk_index ON Invoices (itemid) WITH PRIMARY;",
          "CREATE TABLE KTFile ([fileid] LONG,[itemid] LONG,[fname] VARCHAR(20),[fdate] DATETIME,"
          "[fsize] LONG,[archive] BIT,[volume] VARCHAR(11));",
          "CREATE UNIQUE INDEX pk_index ON KTFile (fileid) WITH PRIMARY;",
          "CREATE TABLE KTItem ([itemid] LONG,[idx_date] DATETIME,[username] VARCHAR(20),"
          "[type] LONG,[description] LONGTEXT,[groupid] LONG,[lockcount] LONG,[tag] VARCHAR(25),"
          "[attachment] BIT,[deleted] BIT);",
          "CREATE UNIQUE INDEX pk_index ON KTItem (itemid) WITH PRIMARY;",
          "INSERT INTO KTItem VALUES (1, #03/15/2024 10:30:00#, 'bob', 2, '', 7, 0, ' ', FALSE, "
          "FALSE)",
          "INSERT INTO Invoices VALUES (1, 'acme', TRUE)",
          "INSERT INTO KTFile VALUES (10, 1, 'a.tif', #03/15/2024#, 100, FALSE, 'VOL1')"})
        driver->execute(QString::fromUtf8(statement));

    // The export's join names the repeated item ids by table.
    const auto exported = driver->select(
        QStringLiteral("select ktfile.*,Invoices.*,ktitem.itemid,ktitem.idx_date,ktitem.type from "
                       "ktfile,ktitem,Invoices where ktfile.itemid =Invoices.itemid and "
                       "ktfile.itemid=ktitem.itemid and ktfile.itemid= 1"));
    ASSERT_EQ(exported->rowCount(), 1);
    EXPECT_EQ(exported->value(0, indexOf(*exported, u"Invoices.itemid"_s)).toInt(), 1);
    EXPECT_EQ(exported->value(0, indexOf(*exported, u"Customer"_s)).toString(), u"acme");
    EXPECT_EQ(exported->value(0, indexOf(*exported, u"Paid"_s)), QVariant(true));
    indexOf(*exported, u"ktfile.itemid"_s);
    indexOf(*exported, u"ktitem.itemid"_s);
    EXPECT_EQ(driver
                  ->select(QStringLiteral("select * from KTItem where deleted = False and "
                                          "idx_date >= #03/15/2024#"))
                  ->rowCount(),
              1);
}

TEST_F(PostgresSelect, FailuresKeepTheWellKnownNumbers) {
    const QString missing =
        postgresErrorOf([&] { driver->select(u"SELECT * FROM KTRevision WHERE itemid = 1"_s); },
                        ErrorNumber::TableNotFound);
    EXPECT_EQ(missing, u"The database engine cannot find the input table or query 'KTRevision'. "
                       "Make sure it exists and that its name is spelled correctly.");
    const QString direct = postgresErrorOf([&] { driver->selectTable(u"InvoicesCustomerHints"_s); },
                                           ErrorNumber::TableNotFound);
    EXPECT_TRUE(direct.contains(u"'InvoicesCustomerHints'")) << direct.toStdString();
    postgresErrorOf([&] { driver->select(u"SELEC * FROM x"_s); }, ErrorNumber::SyntaxError);
    driver->execute(u"CREATE TABLE k ([id] LONG, [s] TEXT(3))"_s);
    driver->execute(u"CREATE UNIQUE INDEX pk_index ON k (id) WITH PRIMARY"_s);
    driver->execute(u"INSERT INTO k VALUES (1, 'a')"_s);
    postgresErrorOf([&] { driver->execute(u"INSERT INTO k VALUES (1, 'b')"_s); },
                    ErrorNumber::IntegrityViolation);
    postgresErrorOf([&] { driver->select(u"SELECT nothere FROM k"_s); },
                    ErrorNumber::ColumnNotFound);
    postgresErrorOf([&] { driver->execute(u"INSERT INTO k VALUES (2, 'long')"_s); },
                    ErrorNumber::ValueDoesNotFit);
    postgresErrorOf([&] { driver->select(u"SELECT 1; SELECT 2"_s); }, ErrorNumber::SyntaxError);
    // None of it broke the connection.
    EXPECT_EQ(count(u"SELECT count(*) FROM k"_s), 1);
}

TEST_F(PostgresSelect, OpensWithThePasswordGivenSeparatelyAndReportsRefusals) {
    PostgresServer& server = PostgresServer::instance();
    const QString database = ConnectionProperties::parse(initString).value(u"Database"_s);
    const ConnectionProperties withoutPassword =
        ConnectionProperties::parse(server.initStringWithoutPassword(database));
    PostgresDriver separate;
    separate.open(withoutPassword, {}, server.password());
    EXPECT_TRUE(separate.isOpen());
    EXPECT_EQ(separate.select(u"SELECT 1"_s)->value(0, 0).toInt(), 1);

    PostgresDriver refused;
    const QString message = postgresErrorOf([&] { refused.open(withoutPassword, {}, u"wrong"_s); },
                                            ErrorNumber::Unspecified);
    EXPECT_TRUE(message.contains(u"password")) << message.toStdString();
    EXPECT_FALSE(refused.isOpen());
    postgresErrorOf([&] { refused.select(u"SELECT 1"_s); }, ErrorNumber::ObjectClosed);
}

} // namespace
} // namespace vx::test
