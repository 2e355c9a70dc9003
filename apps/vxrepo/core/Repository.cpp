#include "core/Repository.h"

#include "core/RepositorySchema.h"
#include "data/ConnectionProperties.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/IdCounter.h"
#include "session/Schema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace vx::repo {
namespace {

Connection openDataLink(const QString& dataLinkPath, bool createDatabase = false) {
    Connection connection;
    connection.open(QStringLiteral("File Name=") + dataLinkPath +
                    (createDatabase ? QStringLiteral(";Create If Missing=True") : QString()));
    return connection;
}

// A value as an init string holds it: quoted when a separator, quote or edge blank would
// otherwise change its meaning.
QString initStringValue(const QString& value) {
    if (!value.contains(u';') && !value.contains(u'"') && !value.contains(u'\'') &&
        value == value.trimmed())
        return value;
    QString quoted = value;
    quoted.replace(u'"', QStringLiteral("\"\""));
    return u'"' + quoted + u'"';
}

} // namespace

QString storedPath(const QString& path) {
    return QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
}

Repository::Repository(QString dir, QString name, Connection connection, QString initString,
                       bool onServer)
    : m_dir(std::move(dir))
    , m_name(std::move(name))
    , m_connection(std::move(connection))
    , m_initString(std::move(initString))
    , m_onServer(onServer) {}

QString Repository::dataLinkPath(const QString& dir, const QString& name) {
    return storedPath(dir + u'/' + name + QStringLiteral(".udl"));
}

QString Repository::databasePath(const QString& dir, const QString& name) {
    return storedPath(dir + u'/' + name + QStringLiteral(".db"));
}

QString Repository::sqliteInitString(const QString& databasePath) {
    // Quoted, so a ';' in the path cannot end the value.
    QString quoted = databasePath;
    quoted.replace(u'"', QStringLiteral("\"\""));
    return QStringLiteral("Provider=SQLite;Data Source=\"%1\"").arg(quoted);
}

QString Repository::serverInitString(const QString& server) {
    const QString text = server.trimmed();
    const bool isFile = QFileInfo(text).isFile();
    const ConnectionProperties properties =
        isFile ? readDataLinkFile(text) : ConnectionProperties::parse(text);
    const QString provider = properties.value(QStringLiteral("Provider"));
    if (!provider.isEmpty() && provider.compare(QLatin1String("PostgreSQL"), Qt::CaseInsensitive))
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("--server names the provider '%1'; a repository on a server "
                                   "needs Provider=PostgreSQL.")
                        .arg(provider));
    for (const QString& key : {QStringLiteral("Host"), QStringLiteral("Database")}) {
        if (properties.value(key).isEmpty())
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("%1 gives no %2. --server takes \"Host=...;Port=...;"
                                       "Database=...;User ID=...;Password=...\" or the path of "
                                       "a data-link file naming such a server.")
                            .arg(isFile ? text : QStringLiteral("--server"), key));
    }
    QStringList parts{QStringLiteral("Provider=PostgreSQL")};
    for (const auto& [key, value] : properties.entries()) {
        if (key.compare(QLatin1String("Provider"), Qt::CaseInsensitive) != 0)
            parts.append(key + u'=' + initStringValue(value));
    }
    return parts.join(u';');
}

QString Repository::describeServer(const QString& initString) {
    const ConnectionProperties properties = ConnectionProperties::parse(initString);
    return QStringLiteral("the database %1 on %2:%3")
        .arg(properties.value(QStringLiteral("Database")), properties.value(QStringLiteral("Host")),
             properties.value(QStringLiteral("Port"), QStringLiteral("5432")));
}

QString Repository::dataLinkPath() const {
    return dataLinkPath(m_dir, m_name);
}

Repository Repository::create(const QString& dir, const QString& name, const QString& server) {
    if (!isPlainName(name))
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The repository name '%1' must start with a letter and hold "
                                   "only letters, digits and '_'.")
                        .arg(name));
    const bool onServer = !server.trimmed().isEmpty();
    const QString folder = storedPath(dir);
    const QString database = databasePath(folder, name);
    const QString dataLink = dataLinkPath(folder, name);
    const QString initString = onServer ? serverInitString(server) : sqliteInitString(database);
    for (const QString& path : onServer ? QStringList{dataLink} : QStringList{database, dataLink}) {
        if (QFileInfo::exists(path))
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("%1 already exists; a repository is never overwritten. "
                                       "Choose another folder or --name.")
                            .arg(path));
    }
    const bool folderExisted = QFileInfo(folder).isDir();
    if (!QDir().mkpath(folder))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot create the folder %1.").arg(folder));
    // Half a repository is worse than none: the next attempt would refuse to overwrite it.
    const auto removeWhatWasMade = [&] {
        if (!onServer) {
            for (const QString& suffix : {QString(), QStringLiteral("-wal"), QStringLiteral("-shm"),
                                          QStringLiteral("-journal"), QStringLiteral("-gate")})
                QFile::remove(database + suffix);
        }
        QFile::remove(dataLink);
        if (!folderExisted)
            QDir().rmdir(folder); // only when nothing else was put there meanwhile
    };

    try {
        writeDataLinkFile(dataLink, initString);
        Repository repository(folder, name, openDataLink(dataLink, !onServer), initString,
                              onServer);
        if (onServer) {
            for (const QString& table : fixedTableNames()) {
                if (repository.hasTable(table))
                    throw Error(ErrorNumber::Unspecified,
                                QStringLiteral("%1 already holds the table %2; a repository is "
                                               "never overwritten. Name an empty database.")
                                    .arg(describeServer(initString), table));
            }
        }
        Connection& connection = repository.connection();
        {
            // On the server the tables come and go with the transaction as well.
            Transaction transaction(connection);
            for (const QString& statement : fixedTableStatements())
                connection.execute(statement);
            IdCounter::prepare(connection);
            transaction.commit();
        }
        return repository;
    } catch (const Error& error) {
        removeWhatWasMade();
        // The engine's words alone ("database or disk is full") do not say what was being made.
        throw Error(error.number(),
                    QStringLiteral("Cannot create the repository in %1: %2")
                        .arg(folder, error.description()),
                    error.source());
    } catch (...) {
        removeWhatWasMade();
        throw;
    }
}

Repository Repository::open(const QString& dir, const QString& name, const QString& server) {
    const QString folder = storedPath(dir);
    const QString dataLink = dataLinkPath(folder, name);
    if (!server.trimmed().isEmpty()) {
        const QString initString = serverInitString(server);
        Connection connection;
        connection.open(initString);
        Repository repository(folder, name, connection, initString, true);
        if (!repository.hasTable(table::Item))
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("%1 holds no repository; make one with \"vxrepo create %2 "
                                       "--server ...\".")
                            .arg(describeServer(initString), folder));
        return repository;
    }
    if (!QFileInfo::exists(dataLink))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("No repository '%1' in %2 (%3 is missing); make one with "
                                   "\"vxrepo create %2\".")
                        .arg(name, folder, dataLink));
    Connection connection = openDataLink(dataLink);
    const bool onServer =
        connection.providerName().compare(QLatin1String("PostgreSQL"), Qt::CaseInsensitive) == 0;
    return Repository(folder, name, connection, QString(), onServer);
}

void Repository::dropTablesQuietly(const QStringList& tableNames) {
    for (const QString& table : tableNames) {
        try {
            if (hasTable(table))
                m_connection.execute(QStringLiteral("DROP TABLE [%1]").arg(table));
        } catch (const Error&) {
            // Best effort: what cannot be dropped is named by the error that led here.
        }
    }
    // The id sequences belong to the fixed tables.
    if (!tableNames.contains(table::Item, Qt::CaseInsensitive))
        return;
    for (const QString& sequence : IdCounter::sequences(m_connection)) {
        try {
            m_connection.execute(QStringLiteral("DROP SEQUENCE IF EXISTS [%1]").arg(sequence));
        } catch (const Error&) {
        }
    }
}

QVariant Repository::scalar(const QString& sql) {
    Recordset rows;
    rows.open(sql, m_connection);
    if (rows.eof() || rows.fieldCount() == 0)
        return {};
    return rows.value(0);
}

qint64 Repository::count(const QString& tableName) {
    return scalar(QStringLiteral("SELECT COUNT(*) AS [rows] FROM [%1]").arg(tableName))
        .toLongLong();
}

qint32 Repository::nextId(const QString& tableName, const QString& column) {
    const QVariant highest =
        scalar(QStringLiteral("SELECT MAX([%1]) AS [highest] FROM [%2]").arg(column, tableName));
    return highest.isNull() ? 1 : highest.toInt() + 1;
}

bool Repository::hasTable(const QString& tableName) {
    Recordset tables = m_connection.openSchema(SchemaKind::Tables);
    for (; !tables.eof(); tables.moveNext()) {
        if (tables.value(QStringLiteral("TABLE_NAME"))
                .toString()
                .compare(tableName, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

bool Repository::containsText(const QString& tableName, const QString& column,
                              const QString& value) {
    // The engines compare text without regard to case, as the controls' lookups expect.
    return scalar(QStringLiteral("SELECT COUNT(*) AS [rows] FROM [%1] WHERE [%2] = %3")
                      .arg(tableName, column, sqlText(value)))
               .toLongLong() > 0;
}

qint32 Repository::addUser(const QString& userName) {
    const QString name = userName.trimmed();
    if (name.isEmpty() || name.size() > 50)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("A user name needs 1 to 50 characters."));
    if (containsText(table::Users, QStringLiteral("UserName"), name))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The user '%1' already exists.").arg(name));
    const qint32 id = nextId(table::Users, QStringLiteral("UserID"));
    m_connection.driver().insertRow(table::Users,
                                    {QStringLiteral("UserID"), QStringLiteral("UserName")},
                                    {id, name}, QString());
    return id;
}

void Repository::addPath(const QString& path) {
    const QString stored = storedPath(path);
    if (stored.size() > 255)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The path %1 is longer than 255 characters.").arg(stored));
    if (containsText(table::Path, QStringLiteral("Path"), stored))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The path %1 is already listed.").arg(stored));
    m_connection.driver().insertRow(table::Path, {QStringLiteral("Path")}, {stored}, QString());
}

void Repository::addWord(const QString& word) {
    const QString text = word.trimmed();
    if (text.isEmpty() || text.size() > 50)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("A dictionary word needs 1 to 50 characters."));
    if (containsText(table::Dictionary, QStringLiteral("words"), text))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The word '%1' is already in the dictionary.").arg(text));
    m_connection.driver().insertRow(table::Dictionary, {QStringLiteral("words")}, {text},
                                    QString());
}

} // namespace vx::repo
