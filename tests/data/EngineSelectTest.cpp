#include "ScratchDatabase.h"
#include "data/DataType.h"
#include "data/Recordset.h"
#include "data/sqlite/SqliteDriver.h"
#include "support/EngineDatabase.h"
#include "support/ErrorNumberOf.h"

#include <QMap>

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

using EngineSelect = EngineTest;

TEST_P(EngineSelect, DeclaredTypesGiveFieldTypesSizesAndValues) {
    connection.execute(
        u"CREATE TABLE Typed ([a] LONG, [b] SHORT, [c] DOUBLE, [d] CURRENCY, [e] DATETIME, "
        "[f] YESNO, [g] VARCHAR(50), [h] CHAR(10), [i] LONGTEXT, [j] MEMO, [k] TEXT(20), "
        "[m] BIT, [n] COUNTER, [Mixed] LONG, [t] TIMESTAMP)"_s);
    connection.execute(
        u"INSERT INTO Typed (a, b, c, d, e, f, g, h, i, j, k, m, mixed, t) VALUES (70000, -3, "
        "2.5, 19.99, #03/15/2024 10:30:00#, TRUE, 'abc', 'fixed', 'long', 'memo', 'short', "
        "FALSE, 1, '2024-01-02T03:04:05')"_s);
    connection.execute(u"INSERT INTO Typed (a) VALUES (NULL)"_s);
    const auto rows = driver().select(u"SELECT * FROM typed ORDER BY n"_s);
    const struct {
        DataType type;
        qint32 size;
    } expected[] = {{DataType::Integer, 4},
                    {DataType::SmallInt, 2},
                    {DataType::Double, 8},
                    {DataType::Currency, 8},
                    {DataType::Date, 8},
                    {DataType::Boolean, 2},
                    {DataType::VarWChar, 50},
                    {DataType::WChar, 10},
                    {DataType::LongVarWChar, 0},
                    {DataType::LongVarWChar, 0},
                    {DataType::VarWChar, 20},
                    {DataType::Boolean, 2},
                    {DataType::Integer, 4},
                    {DataType::Integer, 4},
                    {onPostgres() ? DataType::Date : DataType::DBTimeStamp, onPostgres() ? 8 : 16}};
    ASSERT_EQ(rows->columnCount(), 15);
    for (int i = 0; i < 15; ++i) {
        SCOPED_TRACE(rows->columns()[i].name.toStdString());
        EXPECT_EQ(rows->columns()[i].type, expected[i].type);
        EXPECT_EQ(rows->columns()[i].definedSize, expected[i].size);
        EXPECT_EQ(rows->columns()[i].baseTable, u"Typed");
        EXPECT_EQ(rows->columns()[i].autoIncrement, i == 12);
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
    EXPECT_EQ(rows->value(0, 6).toString(), u"abc");
    // CHAR(n) pads on the server, as Jet's does; the embedded engine keeps the text as written.
    EXPECT_EQ(rows->value(0, 7).toString(), onPostgres() ? u"fixed     "_s : u"fixed"_s);
    EXPECT_EQ(rows->value(0, 10).toString(), u"short");
    EXPECT_EQ(rows->value(0, 14).toDateTime(), QDateTime(QDate(2024, 1, 2), QTime(3, 4, 5)));
    EXPECT_EQ(rows->value(1, 12).toInt(), 2);
    for (int i : {0, 1, 2, 4, 5, 6, 8, 14})
        EXPECT_TRUE(rows->isNull(1, i)) << i;
}

TEST_P(EngineSelect, KeysAutoIncrementAndRepeatedNamesComeFromTheTables) {
    for (const char* statement :
         {"CREATE TABLE declared (id LONG, v LONG, CONSTRAINT [pk_declared] PRIMARY KEY (id))",
          "CREATE TABLE Invoices ([itemid] LONG, [Customer] TEXT(50))",
          "CREATE UNIQUE INDEX pk_index ON Invoices (itemid) WITH PRIMARY",
          "CREATE TABLE KTItem ([itemid] LONG, [username] TEXT(50))",
          "CREATE UNIQUE INDEX pk_index ON KTItem (itemid) WITH PRIMARY",
          "CREATE TABLE counted (id COUNTER CONSTRAINT pk_counted PRIMARY KEY, v LONG)",
          "CREATE TABLE loose (id LONG, v LONG)", "INSERT INTO Invoices VALUES (1, 'Acme')",
          "INSERT INTO ktitem VALUES (1, 'bob')"})
        connection.execute(QString::fromUtf8(statement));
    const struct {
        const char* query;
        bool keyed;
        bool autoIncrement;
    } tables[] = {{"SELECT id, v FROM declared", true, false},
                  {"SELECT itemid, customer FROM invoices", true, false},
                  {"SELECT id, v FROM counted", true, true},
                  {"SELECT id, v FROM loose", false, false}};
    for (const auto& table : tables) {
        SCOPED_TRACE(table.query);
        const auto rows = driver().select(QString::fromUtf8(table.query));
        EXPECT_EQ(rows->columns()[0].keyColumn, table.keyed);
        EXPECT_FALSE(rows->columns()[1].keyColumn);
        EXPECT_EQ(rows->columns()[0].autoIncrement, table.autoIncrement);
        EXPECT_EQ(rows->columns()[0].type, DataType::Integer);
    }

    // A name the result repeats takes the table as the query spells it.
    const auto rows = driver().select(
        u"SELECT * FROM Invoices INNER JOIN ktitem ON Invoices.itemid = ktitem.itemid"_s);
    QStringList names;
    for (const auto& column : rows->columns())
        names << column.name;
    EXPECT_EQ(names, (QStringList{u"Invoices.itemid"_s, u"Customer"_s, u"ktitem.itemid"_s,
                                  u"username"_s}));
    EXPECT_EQ(rows->columns()[2].baseTable, u"KTItem");
    EXPECT_EQ(rows->columns()[2].baseColumn, u"itemid");
    for (const QString& spelling : {u"KTITEM"_s, u"[KTItem]"_s}) {
        const auto table = driver().selectTable(spelling);
        EXPECT_EQ(table->rowCount(), 1);
        EXPECT_EQ(table->columns()[1].baseTable, u"KTItem");
        EXPECT_EQ(table->columns()[1].name, u"username");
    }
}

TEST_P(EngineSelect, NamesAndTextCompareSortAndMatchWithoutRegardToCase) {
    connection.execute(
        u"CREATE TABLE KTUsers ([UserID] LONG, [UserName] VARCHAR(50), [Notes] LONGTEXT)"_s);
    connection.execute(u"INSERT INTO ktusers (USERID, username, notes) VALUES (1, 'Bob', 'Red'), "
                       "(2, 'alice', 'blue'), (3, 'Carol', NULL)"_s);
    const auto found = driver().select(
        u"SELECT userid FROM KTUSERS WHERE [UserName] = 'BOB' OR notes IN ('BLUE')"_s);
    EXPECT_EQ(found->rowCount(), 2);
    EXPECT_EQ(found->columns()[0].baseColumn, u"UserID");
    const auto sorted = driver().select(u"SELECT * FROM KTUsers ORDER BY username"_s);
    ASSERT_EQ(sorted->rowCount(), 3);
    EXPECT_EQ(sorted->value(0, 1).toString(), u"alice");
    EXPECT_EQ(sorted->value(2, 1).toString(), u"Carol");
    EXPECT_EQ(sorted->columns()[1].name, u"UserName");
    EXPECT_EQ(
        count(u"SELECT count(*) FROM KTUsers WHERE username LIKE 'B%' OR Notes LIKE '%LU%'"_s), 2);
    // Grouping and distinct see one value in any letter case.
    connection.execute(u"INSERT INTO KTUsers VALUES (4, 'BOB', '')"_s);
    EXPECT_EQ(count(u"SELECT count(DISTINCT username) FROM KTUsers"_s), 3);
}

TEST_P(EngineSelect, FailuresKeepThePlatformsNumbers) {
    connection.execute(u"CREATE TABLE k ([id] LONG, [s] TEXT(3))"_s);
    connection.execute(u"CREATE UNIQUE INDEX pk_index ON k (id) WITH PRIMARY"_s);
    connection.execute(u"INSERT INTO k VALUES (1, 'a')"_s);
    EXPECT_EQ(expectError([&] { driver().select(u"select * from KTRevision where itemid=1"_s); },
                          ErrorNumber::TableNotFound),
              u"The database engine cannot find the input table or query 'KTRevision'. Make sure "
              u"it exists and that its name is spelled correctly.");
    const QString direct = expectError([&] { driver().selectTable(u"InvoicesCustomerHints"_s); },
                                       ErrorNumber::TableNotFound);
    EXPECT_TRUE(direct.contains(u"'InvoicesCustomerHints'")) << direct.toStdString();
    expectError([&] { connection.execute(u"DELETE FROM gone"_s); }, ErrorNumber::TableNotFound);
    EXPECT_TRUE(expectError([&] { driver().select(u"SELEC * FROM k"_s); }, ErrorNumber::SyntaxError)
                    .contains(u"syntax error"));
    expectError([&] { driver().select(u"SELECT * FROM k; SELECT 1"_s); }, ErrorNumber::SyntaxError);
    expectError([&] { connection.execute(u"INSERT INTO k VALUES (1, 'b')"_s); },
                ErrorNumber::IntegrityViolation);
    expectError([&] { driver().select(u"SELECT nothere FROM k"_s); }, ErrorNumber::ColumnNotFound);
    // The embedded engine keeps a text longer than its column; the server refuses it.
    if (onPostgres())
        expectError([&] { connection.execute(u"INSERT INTO k VALUES (2, 'long')"_s); },
                    ErrorNumber::ValueDoesNotFit);
    // None of it broke the connection.
    EXPECT_EQ(count(u"SELECT count(*) FROM k"_s), 1);
}

TEST_P(EngineSelect, TablesSchemaTellsTablesViewsAndSystemTablesApartByDeclaredName) {
    for (const char* statement :
         {"CREATE TABLE KTSecurity ([itemid] LONG, [UserID] LONG)",
          "CREATE TABLE [InvoicesCustomerHints] ([Customer] TEXT(20))",
          "CREATE TABLE MSysObjects (a LONG)",
          // AUTOINCREMENT makes the embedded engine keep its own sqlite_sequence table.
          "CREATE TABLE counted (id COUNTER CONSTRAINT pk_counted PRIMARY KEY, name TEXT(20))",
          "CREATE VIEW KTSecurityView AS SELECT * FROM KTSecurity"})
        connection.execute(QString::fromUtf8(statement));
    Recordset tables = connection.openSchema(SchemaKind::Tables);
    QMap<QString, QString> types;
    for (; !tables.eof(); tables.moveNext())
        types.insert(tables.value(u"TABLE_NAME"_s).toString(),
                     tables.value(u"TABLE_TYPE"_s).toString());
    for (const char* table : {"KTSecurity", "InvoicesCustomerHints", "MSysObjects", "counted"})
        EXPECT_EQ(types.value(QString::fromLatin1(table)), u"TABLE") << table;
    EXPECT_FALSE(types.contains(u"ktsecurity"_s));
    EXPECT_EQ(types.value(onPostgres() ? u"ktsecurityview"_s : u"KTSecurityView"_s), u"VIEW");
    EXPECT_EQ(types.value(onPostgres() ? u"pg_class"_s : u"sqlite_sequence"_s), u"SYSTEM TABLE");
    if (!onPostgres()) {
        EXPECT_EQ(types.size(), 6);
    }
}

// One best match per type with its literal quotes. The server offers the embedded engine's rows
// for the types both keep, and a row for every type its columns can report.
TEST_P(EngineSelect, ProviderTypesGiveOneBestMatchPerTypeWithItsLiteralQuotes) {
    Recordset types = connection.openSchema(SchemaKind::ProviderTypes);
    QMap<int, QPair<QString, QString>> quotes;
    QMap<int, int> bestMatches;
    for (; !types.eof(); types.moveNext()) {
        if (!types.value(u"BEST_MATCH"_s).toBool())
            continue;
        const int type = types.value(u"DATA_TYPE"_s).toInt();
        ++bestMatches[type];
        quotes[type] = {types.value(u"LITERAL_PREFIX"_s).toString(),
                        types.value(u"LITERAL_SUFFIX"_s).toString()};
        EXPECT_GT(types.value(u"COLUMN_SIZE"_s).toLongLong(), 0);
        EXPECT_FALSE(types.value(u"TYPE_NAME"_s).toString().isEmpty());
    }
    for (int text : {130, 202, 203})
        EXPECT_EQ(quotes.value(text), qMakePair(u"'"_s, u"'"_s)) << text;
    EXPECT_EQ(quotes.value(7), qMakePair(u"#"_s, u"#"_s));
    for (int plain : {2, 3, 5, 11}) {
        ASSERT_TRUE(quotes.contains(plain)) << plain;
        EXPECT_TRUE(quotes.value(plain).first.isEmpty()) << plain;
    }
    for (int count : bestMatches)
        EXPECT_EQ(count, 1);
    if (!onPostgres())
        return;

    SqliteDriver embedded;
    embedded.open(ConnectionProperties::parse(u"Data Source=:memory:"_s), {}, {});
    auto rowsFor = [](const QList<ProviderTypeEntry>& entries, DataType type) {
        QStringList rows;
        for (const ProviderTypeEntry& entry : entries) {
            if (entry.dataType == type)
                rows << u"%1|%2|%3|%4|%5"_s.arg(entry.typeName, QString::number(entry.columnSize),
                                                entry.literalPrefix, entry.literalSuffix,
                                                entry.bestMatch ? u"best"_s : u"-"_s);
        }
        return rows;
    };
    const auto ours = driver().providerTypes();
    const auto theirs = embedded.providerTypes();
    for (DataType type :
         {DataType::WChar, DataType::VarWChar, DataType::LongVarWChar, DataType::Date,
          DataType::Integer, DataType::SmallInt, DataType::Double, DataType::Boolean})
        EXPECT_EQ(rowsFor(ours, type), rowsFor(theirs, type)) << int(type);
    for (DataType type : {DataType::BigInt, DataType::Single, DataType::Currency, DataType::Numeric,
                          DataType::Guid, DataType::LongVarBinary})
        EXPECT_FALSE(rowsFor(ours, type).isEmpty()) << int(type);
}

// The server's computed columns are typed by the server (see the PostgreSQL suite).
TEST(SqliteSelect, ComputedColumnsTakeTheirTypeFromTheFirstValue) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    connection.execute(u"CREATE TABLE t (a LONG, s VARCHAR(10))"_s);
    connection.execute(u"INSERT INTO t VALUES (NULL, 'x'), (4, 'y')"_s);
    const auto rows = connection.driver().select(
        u"SELECT count(*) AS n, a * 2 AS twice, 5000000000 AS big, 1.5 AS r, s || '!' AS t, "
        "NULL AS empty FROM t GROUP BY a ORDER BY a"_s);
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

INSTANTIATE_TEST_SUITE_P(Engines, EngineSelect, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         engineName);

} // namespace
} // namespace vx::test
