#include "data/ConnectionProperties.h"
#include "data/Recordset.h"
#include "data/postgres/PostgresDriver.h"
#include "support/EngineDatabase.h"

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

using PostgresSelect = PostgresDatabase;

TEST_F(PostgresSelect, NativeAndComputedColumnsMapFromTheirTypes) {
    // Quoted type names pass the dialect untouched (unquoted, "date" and "time" are Jet's).
    driver().execute(QStringLiteral(
        "CREATE TABLE native (flag \"bool\", yn yesno, big bigint, r real, amount numeric(10,2), "
        "day \"date\", t \"time\", moment timestamptz, blob bytea, code \"varchar\", "
        "name \"text\")"));
    driver().execute(QStringLiteral(
        "INSERT INTO native VALUES ('t', -1, 5000000000, 1.5, 12.34, '2024-02-29', '10:11:12', "
        "'2024-01-02 03:04:05.678+00', '\\x00ff41', 'x', 'y')"));
    const auto rows = driver().select(QStringLiteral(
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
        driver().execute(QString::fromUtf8(statement));

    // The export's join names the repeated item ids by table.
    Recordset exported;
    exported.open(u"select ktfile.*,Invoices.*,ktitem.itemid,ktitem.idx_date,ktitem.type from "
                  "ktfile,ktitem,Invoices where ktfile.itemid =Invoices.itemid and "
                  "ktfile.itemid=ktitem.itemid and ktfile.itemid= 1"_s,
                  connection);
    ASSERT_EQ(exported.recordCount(), 1);
    for (const char* itemId : {"Invoices.itemid", "ktfile.itemid", "ktitem.itemid"})
        EXPECT_EQ(exported.value(QString::fromLatin1(itemId)).toInt(), 1) << itemId;
    EXPECT_EQ(exported.value(u"Customer"_s).toString(), u"acme");
    EXPECT_EQ(exported.value(u"Paid"_s), QVariant(true));
    EXPECT_EQ(driver()
                  .select(QStringLiteral("select * from KTItem where deleted = False and "
                                         "idx_date >= #03/15/2024#"))
                  ->rowCount(),
              1);
}

TEST_F(PostgresSelect, OpensWithThePasswordGivenSeparatelyAndReportsRefusals) {
    PostgresServer& server = PostgresServer::instance();
    const QString database = ConnectionProperties::parse(connectionText).value(u"Database"_s);
    const ConnectionProperties withoutPassword =
        ConnectionProperties::parse(server.initStringWithoutPassword(database));
    PostgresDriver separate;
    separate.open(withoutPassword, {}, server.password());
    EXPECT_TRUE(separate.isOpen());
    EXPECT_EQ(separate.select(u"SELECT 1"_s)->value(0, 0).toInt(), 1);

    PostgresDriver refused;
    const QString message = expectError([&] { refused.open(withoutPassword, {}, u"wrong"_s); },
                                        ErrorNumber::Unspecified);
    EXPECT_TRUE(message.contains(u"password")) << message.toStdString();
    EXPECT_FALSE(refused.isOpen());
    expectError([&] { refused.select(u"SELECT 1"_s); }, ErrorNumber::ObjectClosed);
}

// A server, database or role may read backslashes in quoted texts as escapes, or look names up in
// another schema first; the library's sessions do neither, whatever is configured.
TEST_F(PostgresSelect, BackslashCriteriaMatchNothingOnARoleThatReadsEscapes) {
    const QString database = ConnectionProperties::parse(connectionText).value(u"Database"_s);
    driver().execute(u"CREATE TABLE grp (itemid integer PRIMARY KEY, customer varchar(40))"_s);
    driver().execute(u"INSERT INTO grp VALUES (1, 'acme'), (2, 'globex'), (3, 'A\\B')"_s);
    driver().execute(u"ALTER ROLE CURRENT_USER IN DATABASE \"%1\" SET standard_conforming_strings "
                     "= off"_s.arg(database));
    driver().execute(u"ALTER ROLE CURRENT_USER IN DATABASE \"%1\" SET search_path = pg_temp, "
                     "\"$user\", public"_s.arg(database));
    ASSERT_EQ(count(u"SELECT count(*) FROM pg_db_role_setting s JOIN pg_database d ON d.oid = "
                    "s.setdatabase WHERE d.datname = current_database() AND "
                    "'standard_conforming_strings=off' = ANY(s.setconfig)"_s),
              1);

    Connection connection = connect();
    Driver& session = connection.driver();
    const auto settings = session.select(u"SELECT current_setting('standard_conforming_strings') "
                                         "|| current_setting('search_path') || current_schema()"_s);
    EXPECT_EQ(settings->value(0, 0).toString(), u"on\"public\"public");

    // The form's criterion and a Replace All's condition with the same text, once as the session
    // starts and once after a query turned escapes back on for it.
    const QString criterion = u"'\\'' or 1=1 --'"_s;
    for (const bool turnedOff : {false, true}) {
        if (turnedOff)
            session.select(u"SELECT set_config('standard_conforming_strings', 'off', 1 = 0)"_s);
        EXPECT_EQ(session.select(u"SELECT * FROM grp WHERE LOWER(grp.customer) = "_s + criterion)
                      ->rowCount(),
                  0);
        session.execute(u"UPDATE grp SET customer = 'changed' WHERE customer = "_s + criterion +
                        u" AND itemid IN (SELECT itemid FROM grp)"_s);
        EXPECT_EQ(count(u"SELECT count(*) FROM grp WHERE customer = 'changed'"_s), 0);
        EXPECT_EQ(session.select(u"SELECT itemid FROM grp WHERE customer = 'A\\B'"_s)->rowCount(),
                  1);
    }
}

} // namespace
} // namespace vx::test
