#include "ScratchDatabase.h"

#include <QFile>
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
    expectError([&] { copy.execute("SELECT 1"); }, ErrorNumber::ObjectClosed);

    // Reopened later, the file is found without asking to create it.
    Connection again;
    again.open(scratch.connectionText());
    EXPECT_EQ(countRows(again, "T"), 1);
    expectError([&] { again.open(scratch.connectionText()); }, qint32(0x800A0E79));

    // The text's own keys win over the file's.
    Connection other;
    other.open(scratch.connectionText() + ";Data Source=" + scratch.path("other.db") +
               ";Create If Missing=-1");
    EXPECT_TRUE(QFile::exists(scratch.path("other.db")));
    expectError([&] { other.execute("SELECT * FROM t"); }, ErrorNumber::TableNotFound);
}

TEST(Connection, BadConnectionTextsFailWithClearErrors) {
    ScratchDatabase scratch;
    Connection connection;
    // An initialisation file without the data-link entry gives an empty file name.
    const QString emptyName = expectError(
        [&] { connection.open("File Name=;Jet OLEDB:Database Password = ' morvantel'"); },
        ErrorNumber::InvalidArgument);
    EXPECT_TRUE(emptyName.contains(u"File Name"));

    const QString missingLink = scratch.path("nowhere.udl");
    EXPECT_TRUE(
        expectError([&] { connection.open("File Name=" + missingLink); }, ErrorNumber::Unspecified)
            .contains(missingLink));

    // A repository file that is not there is not silently created.
    EXPECT_TRUE(
        expectError([&] { connection.open(scratch.connectionText()); }, ErrorNumber::Unspecified)
            .contains(scratch.databasePath()));
    EXPECT_FALSE(QFile::exists(scratch.databasePath()));

    const QString jetLink = scratch.path("jet.udl");
    writeDataLinkFile(jetLink, QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=x.mdb;"
                                              "Persist Security Info=False"));
    const QString jet = expectError([&] { connection.open("File Name=" + jetLink); },
                                    ErrorNumber::ProviderNotFound);
    EXPECT_TRUE(jet.contains(u"Microsoft.Jet.OLEDB.4.0"));
    EXPECT_TRUE(jet.contains(u"SQLite"));
    expectError([&] { connection.open("Data Source=x.db"); }, ErrorNumber::ProviderNotFound);
    EXPECT_FALSE(connection.isOpen());
}

} // namespace
} // namespace vx::test
