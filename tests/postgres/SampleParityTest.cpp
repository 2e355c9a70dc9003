// The sample built on a PostgreSQL server must answer the controls' queries exactly as the one
// built on SQLite: same field names, types, sizes and values, row by row.

#include "core/CommandLine.h"
#include "core/Repository.h"
#include "core/SampleBuilder.h"
#include "core/SampleContent.h"
#include "data/Connection.h"
#include "data/ConnectionProperties.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/Schema.h"
#include "support/PostgresServer.h"
#include "support/SampleRepository.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

// Sets an environment variable for the length of a scope.
class EnvironmentValue {
public:
    EnvironmentValue(const char* name, const QByteArray& value)
        : m_name(name)
        , m_had(qEnvironmentVariableIsSet(name))
        , m_previous(qgetenv(name)) {
        qputenv(name, value);
    }
    ~EnvironmentValue() {
        if (m_had)
            qputenv(m_name, m_previous);
        else
            qunsetenv(m_name);
    }

private:
    const char* m_name;
    bool m_had;
    QByteArray m_previous;
};

constexpr qint32 ParityDocuments = 300;

struct BuiltSample {
    QTemporaryDir folder;
    repo::SampleResult result;
    Connection connection;
};

class SampleParity : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        PostgresServer& server = PostgresServer::instance();
        if (!server.isAvailable() || !server.isRunning())
            return;
        serverInit = server.createDatabase();
        if (serverInit.isEmpty())
            return;
        sqlite = build(QString());
        postgres = build(serverInit);
    }
    static void TearDownTestSuite() {
        sqlite.reset();
        postgres.reset();
    }

    static std::unique_ptr<BuiltSample> build(const QString& server) {
        auto sample = std::make_unique<BuiltSample>();
        repo::SampleOptions options;
        options.documents = ParityDocuments;
        options.server = server;
        sample->result = repo::createSample(sample->folder.path(), options);
        // As the controls connect: through the group's data-link file.
        sample->connection.open(u"File Name="_s + sample->result.dataLinkPath);
        return sample;
    }

    void SetUp() override {
        PostgresServer& server = PostgresServer::instance();
        if (!server.isAvailable())
            GTEST_SKIP() << server.skipReason().toStdString();
        ASSERT_TRUE(server.isRunning()) << server.failure().toStdString();
        ASSERT_TRUE(sqlite && postgres) << "the samples were not built";
    }

    // Both engines' answers to `sql`, compared field by field and value by value.
    // `compareTypes` false compares names and values only.
    static void expectSameRows(const QString& sql, qsizetype minimumRows = 1,
                               bool compareTypes = true) {
        SCOPED_TRACE(sql.toStdString());
        Recordset left;
        Recordset right;
        left.open(sql, sqlite->connection);
        right.open(sql, postgres->connection);
        ASSERT_EQ(left.fieldCount(), right.fieldCount());
        for (int i = 0; i < left.fieldCount(); ++i) {
            EXPECT_EQ(left.field(i).name(), right.field(i).name()) << "field " << i;
            if (!compareTypes)
                continue;
            EXPECT_EQ(left.field(i).type(), right.field(i).type())
                << left.field(i).name().toStdString();
            EXPECT_EQ(left.field(i).definedSize(), right.field(i).definedSize())
                << left.field(i).name().toStdString();
        }
        ASSERT_EQ(left.recordCount(), right.recordCount());
        EXPECT_GE(left.recordCount(), minimumRows) << "a query that finds nothing proves little";
        int mismatches = 0;
        for (qsizetype row = 0; !left.eof() && !right.eof() && mismatches < 10; ++row) {
            for (int i = 0; i < left.fieldCount(); ++i) {
                const QVariant a = left.value(i);
                const QVariant b = right.value(i);
                if (a.isNull() != b.isNull() || (!a.isNull() && a != b)) {
                    ADD_FAILURE() << "row " << row << " " << left.field(i).name().toStdString()
                                  << ": " << a.toString().toStdString() << " ("
                                  << a.metaType().name() << ") against "
                                  << b.toString().toStdString() << " (" << b.metaType().name()
                                  << ")";
                    ++mismatches;
                }
            }
            left.moveNext();
            right.moveNext();
        }
    }

    static inline QString serverInit;
    static inline std::unique_ptr<BuiltSample> sqlite;
    static inline std::unique_ptr<BuiltSample> postgres;
};

TEST_F(SampleParity, ServerSampleWritesFilesThatNameTheServer) {
    const ConnectionProperties group = readDataLinkFile(postgres->result.dataLinkPath);
    EXPECT_EQ(group.value(u"Provider"_s), u"PostgreSQL");
    EXPECT_EQ(group.value(u"Database"_s),
              ConnectionProperties::parse(serverInit).value(u"Database"_s));
    const ConnectionProperties repository = readDataLinkFile(
        repo::Repository::dataLinkPath(postgres->result.dir, repo::Repository::DefaultName));
    EXPECT_EQ(repository.value(u"Provider"_s), u"PostgreSQL");
    // No database file in DIR; the documents still are there.
    EXPECT_FALSE(QFileInfo::exists(
        repo::Repository::databasePath(postgres->result.dir, repo::Repository::DefaultName)));
    EXPECT_EQ(postgres->result.counts.filesOnDisk, sqlite->result.counts.filesOnDisk);
    EXPECT_TRUE(QFileInfo(postgres->result.documentFolder).isDir());
    EXPECT_EQ(postgres->connection.providerName(), u"PostgreSQL");
}

TEST_F(SampleParity, TablesHoldTheSameNumberOfRows) {
    // Counts are 32-bit integers on both engines, as the controls expect.
    for (const QString& table : {u"KTItem"_s, u"KTFile"_s, u"KTGroup"_s, u"KTUsers"_s, u"KTPath"_s,
                                 u"KTRevision"_s, u"KTSecurity"_s, u"keywords"_s, u"dictionary"_s,
                                 u"Invoices"_s, hintTableName(u"Invoices"_s, u"Customer"_s),
                                 hintTableName(u"Invoices"_s, u"Categories"_s)})
        expectSameRows(u"SELECT COUNT(*) AS [rows] FROM [%1]"_s.arg(table));
}

// The controls' queries: the hit list's joins, keyword and security filters, file rows.
TEST_F(SampleParity, ControlQueriesGiveTheSameRows) {
    const QString join = QStringLiteral(
        "SELECT * FROM Invoices, KTItem WHERE Invoices.itemid = KTItem.itemid AND %1 "
        "ORDER BY Invoices.itemid");
    expectSameRows(join.arg(u"KTItem.deleted = 0"_s), ParityDocuments / 2);
    expectSameRows(join.arg(u"[Invoices].[Customer] = '%1'"_s.arg(repo::sample::customers()[0])));
    expectSameRows(join.arg(u"[Amount] > 500 AND [Amount] <= 2000"_s));
    expectSameRows(join.arg(u"[Paid] = False AND KTItem.attachment = True"_s));
    expectSameRows(join.arg(u"ktitem.itemid NOT IN (SELECT itemid FROM KTSecurity WHERE "
                            "UserID = 2)"_s),
                   ParityDocuments / 2);
    QStringList keywords;
    for (qint32 id = 1; id <= 5; ++id)
        keywords += repo::sample::document(id, ParityDocuments).keywords;
    ASSERT_FALSE(keywords.isEmpty());
    expectSameRows(QStringLiteral("SELECT DISTINCT KTItem.itemid, KTItem.description FROM KTItem, "
                                  "keywords WHERE KTItem.itemid = keywords.itemid AND keyword "
                                  "IN ('%1') ORDER BY KTItem.itemid")
                       .arg(keywords.join(u"', '"_s)));
    expectSameRows(u"select * from keywords where itemid = 13 ORDER BY keyword"_s);
    expectSameRows(u"select * from KTRevision where itemid = 13 ORDER BY [Version]"_s);
    expectSameRows(u"SELECT * FROM KTFile ORDER BY fileid"_s, ParityDocuments);
    expectSameRows(u"SELECT * FROM KTUsers ORDER BY UserID"_s);
}

// A sample that fails after the repository tables were made on the server takes them back, so
// the same database can be used again.
TEST_F(SampleParity, FailedServerSampleLeavesTheDatabaseEmpty) {
    PostgresServer& server = PostgresServer::instance();
    const QString database = server.createDatabase();
    ASSERT_FALSE(database.isEmpty()) << server.failure().toStdString();
    QTemporaryDir root;
    // Too long for the group's files, which are written after the repository tables.
    const QString tooDeep = root.filePath(QString(240, u'd'));
    repo::SampleOptions options;
    options.documents = 5;
    options.server = database;
    EXPECT_THROW(repo::createSample(tooDeep, options), Error);
    EXPECT_FALSE(QFileInfo::exists(tooDeep));

    Connection connection;
    connection.open(database);
    Recordset tables = connection.openSchema(SchemaKind::Tables);
    for (; !tables.eof(); tables.moveNext())
        EXPECT_NE(tables.value(u"TABLE_TYPE"_s).toString(), u"TABLE")
            << tables.value(u"TABLE_NAME"_s).toString().toStdString();
    connection.close();

    QTemporaryDir fine;
    const repo::SampleResult retried = repo::createSample(fine.path(), options);
    EXPECT_EQ(retried.counts.documents, 5);
}

// The control suites run on the server by VX_TEST_ENGINE=postgres: each sample copy must then
// be a database of its own, named by the copy's data-link files, with the sample's rows.
TEST(ServerSampleCopy, EachCopyIsADatabaseOfItsOwnWithTheSampleRows) {
    PostgresServer& server = PostgresServer::instance();
    if (!server.isAvailable())
        GTEST_SKIP() << server.skipReason().toStdString();
    ASSERT_TRUE(server.isRunning()) << server.failure().toStdString();
    const EnvironmentValue engine("VX_TEST_ENGINE", "postgres");

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
}

// Runs the repository tool; `errors` receives what it wrote to its error stream.
int runTool(const QStringList& arguments, QString& errors) {
    QString output;
    QTextStream out(&output);
    QTextStream err(&errors);
    const int code = repo::runRepositoryTool(arguments, out, err, QString());
    err.flush();
    return code;
}

// Without a password anywhere the server refuses; PGPASSWORD or a password file let the tool in,
// and the data-link file it writes holds no password; one given on --server is kept. Through that
// file the tool adds rows to the server's tables, and it refuses a database that already holds a
// repository.
TEST(PostgresTool, TakesThePasswordFromTheEnvironmentAndWorksThroughItsDataLink) {
    PostgresServer& server = PostgresServer::instance();
    if (!server.isAvailable())
        GTEST_SKIP() << server.skipReason().toStdString();
    ASSERT_TRUE(server.isRunning()) << server.failure().toStdString();
    QTemporaryDir folder;
    const QString passFile = folder.filePath(u"pgpass"_s);
    {
        QFile file(passFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(u"127.0.0.1:%1:*:*:%2\n"_s.arg(server.port()).arg(server.password()).toUtf8());
    }
    QFile::setPermissions(passFile, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    struct Case {
        const char* variable;
        QByteArray value;
        bool passwordInText;
        bool works;
    };
    const QList<Case> cases{
        {"PGPASSFILE", folder.filePath(u"none"_s).toUtf8(), false, false},
        {"PGPASSWORD", server.password().toUtf8(), false, true},
        {"PGPASSFILE", passFile.toUtf8(), false, true},
        {"PGPASSFILE", folder.filePath(u"none"_s).toUtf8(), true, true},
    };
    for (const Case& c : cases) {
        const EnvironmentValue value(c.variable, c.value);
        const QString database = server.createDatabase();
        ASSERT_FALSE(database.isEmpty()) << server.failure().toStdString();
        const QString name = ConnectionProperties::parse(database).value(u"Database"_s);
        const QString serverText =
            c.passwordInText ? database : server.initStringWithoutPassword(name);
        QTemporaryDir dir;
        QString errors;
        SCOPED_TRACE(c.variable + (" " + serverText).toStdString());
        EXPECT_EQ(runTool({u"create"_s, dir.path(), u"--server"_s, serverText}, errors),
                  c.works ? repo::ExitOk : repo::ExitFailed)
            << errors.toStdString();
        if (!c.works) {
            EXPECT_TRUE(errors.contains(u"password"_s)) << errors.toStdString();
            continue;
        }
        EXPECT_EQ(readDataLinkFile(
                      repo::Repository::dataLinkPath(dir.path(), repo::Repository::DefaultName))
                      .contains(u"Password"_s),
                  c.passwordInText);
        EXPECT_EQ(runTool({u"add-user"_s, dir.path(), u"carol"_s}, errors), repo::ExitOk)
            << errors.toStdString();
        EXPECT_EQ(
            runTool({u"add-word"_s, dir.path(), u"invoice"_s, u"--server"_s, database}, errors),
            repo::ExitOk);
        // Names compare without regard to case on the server as well.
        QString duplicate;
        EXPECT_EQ(runTool({u"add-user"_s, dir.path(), u"CAROL"_s}, duplicate), repo::ExitFailed);
        EXPECT_TRUE(duplicate.contains(u"already exists"_s)) << duplicate.toStdString();
        QTemporaryDir other;
        QString refused;
        EXPECT_EQ(runTool({u"create"_s, other.path(), u"--server"_s, serverText}, refused),
                  repo::ExitFailed);
        EXPECT_TRUE(refused.contains(u"already holds the table KTItem"_s)) << refused.toStdString();
        EXPECT_FALSE(QFileInfo::exists(
            repo::Repository::dataLinkPath(other.path(), repo::Repository::DefaultName)));

        Connection connection;
        connection.open(database);
        for (const auto& [sql, value] :
             {std::pair{u"SELECT [UserName] FROM [KTUsers]"_s, u"carol"_s},
              std::pair{u"SELECT [words] FROM [dictionary]"_s, u"invoice"_s}}) {
            Recordset rows;
            rows.open(sql, connection);
            ASSERT_EQ(rows.recordCount(), 1) << sql.toStdString();
            EXPECT_EQ(rows.value(0).toString(), value);
        }
    }
    // Another provider, or a server text without a database, is a usage mistake with a reason.
    for (const auto& [text, reason] :
         {std::pair{u"Provider=SQLite;Data Source=x.db"_s, "Provider=PostgreSQL"},
          std::pair{u"Host=127.0.0.1;Port=1"_s, "no Database"}}) {
        QTemporaryDir other;
        QString errors;
        EXPECT_EQ(runTool({u"create"_s, other.path(), u"--server"_s, text}, errors),
                  repo::ExitFailed);
        EXPECT_TRUE(errors.contains(QLatin1String(reason))) << errors.toStdString();
    }
}

} // namespace
} // namespace vx::test
