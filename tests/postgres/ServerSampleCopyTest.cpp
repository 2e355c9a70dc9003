#include "data/Connection.h"
#include "data/ConnectionProperties.h"
#include "data/Recordset.h"
#include "support/PostgresServer.h"
#include "support/SampleRepository.h"

#include <gtest/gtest.h>

namespace vx::test {
namespace {

// The control suites run on the server by VX_TEST_ENGINE=postgres: each sample copy must then
// be a database of its own, named by the copy's data-link files, with the sample's rows.
TEST(ServerSampleCopy, EachCopyIsADatabaseOfItsOwnWithTheSampleRows) {
    PostgresServer& server = PostgresServer::instance();
    if (!server.isAvailable())
        GTEST_SKIP() << server.skipReason().toStdString();
    ASSERT_TRUE(server.isRunning()) << server.failure().toStdString();
    qputenv("VX_TEST_ENGINE", "postgres");

    SampleRepository first;
    SampleRepository second;
    const ConnectionProperties a = readDataLinkFile(first.dataLinkPath());
    const ConnectionProperties b = readDataLinkFile(second.dataLinkPath());
    EXPECT_EQ(a.value("Provider"), "PostgreSQL");
    EXPECT_NE(a.value("Database"), b.value("Database"));

    Connection one;
    Connection two;
    one.open(first.connectionText());
    two.open(second.connectionText());
    one.execute(QStringLiteral("UPDATE KTItem SET Deleted = -1"));
    Recordset live;
    live.open(QStringLiteral("SELECT COUNT(*) AS n FROM KTItem WHERE Deleted = 0"), two);
    EXPECT_EQ(live.value(0).toLongLong(),
              second.expected().documents - second.expected().deletedDocuments);

    // The copy's paths were moved to its own folder, not the template's.
    Recordset paths;
    paths.open(QStringLiteral("SELECT [Path] FROM KTPath"), one);
    ASSERT_FALSE(paths.eof());
    EXPECT_TRUE(paths.value(0).toString().startsWith(first.dir()))
        << paths.value(0).toString().toStdString();
    qunsetenv("VX_TEST_ENGINE");
}

} // namespace
} // namespace vx::test
