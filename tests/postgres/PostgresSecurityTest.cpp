#include "PostgresFixture.h"
#include "core/CommandLine.h"
#include "core/Repository.h"
#include "data/Recordset.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>

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

// A server, database or role may read backslashes in quoted texts as escapes, or look names up in
// another schema first; the library's sessions do neither, whatever is configured.
class PostgresSecurity : public PostgresFixture {
protected:
    QString databaseName() const {
        return ConnectionProperties::parse(initString).value(u"Database"_s);
    }

    QString setting(PostgresDriver& session, const QString& name) const {
        return session.select(u"SELECT current_setting('%1')"_s.arg(name))->value(0, 0).toString();
    }
};

TEST_F(PostgresSecurity, BackslashCriteriaMatchNothingOnARoleThatReadsEscapes) {
    driver->execute(u"CREATE TABLE grp (itemid integer PRIMARY KEY, customer varchar(40))"_s);
    driver->execute(u"INSERT INTO grp VALUES (1, 'acme'), (2, 'globex'), (3, 'A\\B')"_s);
    driver->execute(u"ALTER ROLE CURRENT_USER IN DATABASE \"%1\" SET standard_conforming_strings "
                    "= off"_s.arg(databaseName()));
    driver->execute(u"ALTER ROLE CURRENT_USER IN DATABASE \"%1\" SET search_path = pg_temp, "
                    "\"$user\", public"_s.arg(databaseName()));
    ASSERT_EQ(count(u"SELECT count(*) FROM pg_db_role_setting s JOIN pg_database d ON d.oid = "
                    "s.setdatabase WHERE d.datname = current_database() AND "
                    "'standard_conforming_strings=off' = ANY(s.setconfig)"_s),
              1);

    const auto session = openDriver();
    EXPECT_EQ(setting(*session, u"standard_conforming_strings"_s), u"on");
    EXPECT_EQ(setting(*session, u"search_path"_s), u"\"public\"");
    EXPECT_EQ(session->select(u"SELECT current_schema()"_s)->value(0, 0).toString(), u"public");

    // The form's criterion and a Replace All's condition with the same text, once as the session
    // starts and once after a query turned escapes back on for it.
    const QString criterion = u"'\\'' or 1=1 --'"_s;
    for (const bool turnedOff : {false, true}) {
        if (turnedOff)
            session->select(u"SELECT set_config('standard_conforming_strings', 'off', 1 = 0)"_s);
        EXPECT_EQ(session->select(u"SELECT * FROM grp WHERE LOWER(grp.customer) = "_s + criterion)
                      ->rowCount(),
                  0);
        session->execute(u"UPDATE grp SET customer = 'changed' WHERE customer = "_s + criterion +
                         u" AND itemid IN (SELECT itemid FROM grp)"_s);
        EXPECT_EQ(count(u"SELECT count(*) FROM grp WHERE customer = 'changed'"_s), 0);
        EXPECT_EQ(session->select(u"SELECT itemid FROM grp WHERE customer = 'A\\B'"_s)->rowCount(),
                  1);
    }
}

// Runs the repository tool; returns its exit code.
int runTool(const QStringList& arguments, QString& errors) {
    QString output;
    QTextStream out(&output);
    QTextStream err(&errors);
    const int code = repo::runRepositoryTool(arguments, out, err, QString());
    err.flush();
    return code;
}

TEST_F(PostgresSecurity, ToolTakesThePasswordFromTheEnvironmentAndKeepsWrittenOnesPrivate) {
    PostgresServer& server = PostgresServer::instance();
    const auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther |
                        QFileDevice::WriteOther;
    QTemporaryDir folder;
    const QString passFile = folder.filePath(u"pgpass"_s);
    {
        QFile file(passFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(u"127.0.0.1:%1:*:*:%2\n"_s.arg(server.port()).arg(server.password()).toUtf8());
    }
    QFile::setPermissions(passFile, QFileDevice::ReadOwner | QFileDevice::WriteOwner);

    // Without a password anywhere the server refuses; PGPASSWORD or a password file let the tool
    // in, and the data-link file it writes holds no password. One given on --server is kept
    // in a file only its owner reads.
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
        const std::string context = c.variable + (" " + serverText).toStdString();
        EXPECT_EQ(runTool({u"create"_s, dir.path(), u"--server"_s, serverText}, errors),
                  c.works ? repo::ExitOk : repo::ExitFailed)
            << context << errors.toStdString();
        if (!c.works) {
            EXPECT_TRUE(errors.contains(u"password"_s)) << errors.toStdString();
            continue;
        }
        const QString dataLink =
            repo::Repository::dataLinkPath(dir.path(), repo::Repository::DefaultName);
        const ConnectionProperties written = readDataLinkFile(dataLink);
        EXPECT_EQ(written.contains(u"Password"_s), c.passwordInText) << context;
        if (c.passwordInText) {
            EXPECT_EQ(QFile::permissions(dataLink) & others, QFileDevice::Permissions()) << context;
        } else {
            // A file without a secret is as readable as any new file, for the other users.
            QFile probe(dir.filePath(u"probe"_s));
            ASSERT_TRUE(probe.open(QIODevice::WriteOnly));
            EXPECT_EQ(QFile::permissions(dataLink), probe.permissions()) << context;
        }
        // add-user opens the repository through the data-link file it wrote.
        EXPECT_EQ(runTool({u"add-user"_s, dir.path(), u"carol"_s}, errors), repo::ExitOk)
            << context << errors.toStdString();
    }
}

} // namespace
} // namespace vx::test
