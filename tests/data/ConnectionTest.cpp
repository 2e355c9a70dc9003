#include "ScratchDatabase.h"
#include "data/Recordset.h"

#include <QFile>
#include <QMap>
#include <gtest/gtest.h>

namespace vx::test {
namespace {

qint64 countRows(Connection& connection, const QString& table) {
    const auto rows = connection.driver().select("SELECT count(*) FROM " + table);
    return rows->integerAt(0, 0);
}

TEST(Connection, OpensThroughTheDataLinkFileTheControlsName) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    EXPECT_TRUE(connection.isOpen());
    EXPECT_EQ(connection.providerName(), u"SQLite");
    // The data source was relative to the data-link file's folder.
    EXPECT_TRUE(QFile::exists(scratch.databasePath()));

    // Copies share one session: a table made through one is seen by the other, and closing
    // one closes both.
    Connection copy = connection;
    copy.execute("CREATE TABLE t (a LONG)");
    EXPECT_EQ(connection.execute("INSERT INTO t VALUES (1)"), 1);
    EXPECT_EQ(countRows(copy, "t"), 1);
    connection.close();
    EXPECT_FALSE(copy.isOpen());
    errorOf([&] { copy.execute("SELECT 1"); }, ErrorNumber::ObjectClosed);

    // Reopened later, the file is found without asking to create it.
    Connection again;
    again.open(scratch.connectionText());
    EXPECT_EQ(countRows(again, "T"), 1);
    errorOf([&] { again.open(scratch.connectionText()); }, qint32(0x800A0E79));

    // The text's own keys win over the file's.
    Connection other;
    other.open(scratch.connectionText() + ";Data Source=" + scratch.path("other.db") +
               ";Create If Missing=-1");
    EXPECT_TRUE(QFile::exists(scratch.path("other.db")));
    errorOf([&] { other.execute("SELECT * FROM t"); }, ErrorNumber::TableNotFound);
}

TEST(Connection, BadConnectionTextsFailWithClearErrors) {
    ScratchDatabase scratch;
    Connection connection;
    // An initialisation file without the data-link entry gives an empty file name.
    const QString emptyName =
        errorOf([&] { connection.open("File Name=;Jet OLEDB:Database Password = ' morvantel'"); },
                ErrorNumber::InvalidArgument);
    EXPECT_TRUE(emptyName.contains(u"File Name"));

    const QString missingLink = scratch.path("nowhere.udl");
    EXPECT_TRUE(
        errorOf([&] { connection.open("File Name=" + missingLink); }, ErrorNumber::Unspecified)
            .contains(missingLink));

    // A repository file that is not there is not silently created.
    EXPECT_TRUE(
        errorOf([&] { connection.open(scratch.connectionText()); }, ErrorNumber::Unspecified)
            .contains(scratch.databasePath()));
    EXPECT_FALSE(QFile::exists(scratch.databasePath()));

    const QString jetLink = scratch.path("jet.udl");
    writeDataLinkFile(jetLink, QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=x.mdb;"
                                              "Persist Security Info=False"));
    const QString jet =
        errorOf([&] { connection.open("File Name=" + jetLink); }, ErrorNumber::ProviderNotFound);
    EXPECT_TRUE(jet.contains(u"Microsoft.Jet.OLEDB.4.0"));
    EXPECT_TRUE(jet.contains(u"SQLite"));
    errorOf([&] { connection.open("Data Source=x.db"); }, ErrorNumber::ProviderNotFound);
    EXPECT_FALSE(connection.isOpen());
}

TEST(Connection, TransactionsNestAndRolledBackWorkLeavesNothing) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    connection.execute("CREATE TABLE t (a LONG)");

    connection.beginTrans();
    connection.execute("INSERT INTO t VALUES (1)");
    connection.beginTrans();
    EXPECT_EQ(connection.transactionLevel(), 2);
    connection.execute("INSERT INTO t VALUES (2)");
    connection.rollbackTrans(); // only the inner row goes
    connection.beginTrans();
    connection.execute("INSERT INTO t VALUES (3)");
    connection.commitTrans();
    EXPECT_EQ(countRows(connection, "t"), 2);
    connection.rollbackTrans(); // the outer one takes the committed inner work with it
    EXPECT_EQ(connection.transactionLevel(), 0);
    EXPECT_EQ(countRows(connection, "t"), 0);
    errorOf([&] { connection.commitTrans(); }, ErrorNumber::Unspecified);

    {
        Transaction kept(connection);
        connection.execute("INSERT INTO t VALUES (4)");
        kept.commit();
    }
    {
        Transaction dropped(connection);
        connection.execute("INSERT INTO t VALUES (5)");
    }
    EXPECT_EQ(connection.transactionLevel(), 0);
    EXPECT_EQ(countRows(connection, "t"), 1);

    // Closing with a transaction open keeps none of it.
    connection.beginTrans();
    connection.execute("INSERT INTO t VALUES (6)");
    connection.close();
    Connection reopened = scratch.connect();
    EXPECT_EQ(countRows(reopened, "t"), 1);
}

TEST(Connection, TablesSchemaTellsTablesViewsAndSystemTablesApart) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    connection.execute("CREATE TABLE KTItem (itemid LONG)");
    connection.execute("CREATE VIEW KTSecurity AS SELECT itemid FROM KTItem");
    // AUTOINCREMENT makes the engine keep its own sqlite_sequence table.
    connection.execute("CREATE TABLE counted (id COUNTER, name TEXT(20))");
    connection.execute("CREATE TABLE MSysObjects (a LONG)");

    Recordset tables = connection.openSchema(SchemaKind::Tables);
    QMap<QString, QString> types;
    for (tables.moveFirst(); !tables.eof(); tables.moveNext())
        types.insert(tables.value("TABLE_NAME").toString(), tables.value("TABLE_TYPE").toString());
    EXPECT_EQ(types.value("KTItem"), u"TABLE");
    EXPECT_EQ(types.value("KTSecurity"), u"VIEW");
    EXPECT_EQ(types.value("sqlite_sequence"), u"SYSTEM TABLE");
    EXPECT_EQ(types.value("MSysObjects"), u"TABLE");
    EXPECT_EQ(types.size(), 5);
}

TEST(Connection, ProviderTypesGiveOneBestMatchPerTypeWithItsLiteralQuotes) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    Recordset types = connection.openSchema(SchemaKind::ProviderTypes);
    QMap<int, QPair<QString, QString>> quotes;
    QMap<int, int> bestMatches;
    for (types.moveFirst(); !types.eof(); types.moveNext()) {
        if (!types.value("BEST_MATCH").toBool())
            continue;
        const int type = types.value("DATA_TYPE").toInt();
        ++bestMatches[type];
        quotes[type] = {types.value("LITERAL_PREFIX").toString(),
                        types.value("LITERAL_SUFFIX").toString()};
        EXPECT_GT(types.value("COLUMN_SIZE").toLongLong(), 0);
        EXPECT_FALSE(types.value("TYPE_NAME").toString().isEmpty());
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
}

} // namespace
} // namespace vx::test
