#include "data/postgres/PostgresDriver.h"

#include "data/dialect/PostgresDialect.h"
#include "data/dialect/SqlLexer.h"
#include "data/postgres/PostgresCatalog.h"
#include "data/postgres/PostgresErrors.h"
#include "data/postgres/PostgresResultReader.h"
#include "data/postgres/PostgresResultStream.h"
#include "data/postgres/PostgresRowWriter.h"
#include "data/postgres/PostgresSchema.h"
#include "data/postgres/PostgresSession.h"

#include <optional>

namespace vx {

using namespace postgres;

namespace {

constexpr const char* defaultConnectTimeout = "15";

QString firstOf(const ConnectionProperties& properties, std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        const QString value = properties.value(QString::fromLatin1(key)).trimmed();
        if (!value.isEmpty())
            return value;
    }
    return {};
}

// The schema holding the repository's tables: "public" unless the data link names another.
QString schemaOf(const ConnectionProperties& properties) {
    const QString schema = firstOf(properties, {"Schema"});
    return schema.isEmpty() ? QStringLiteral("public") : schema;
}

// A value inside libpq's "options": blanks and backslashes escaped, the name quoted so that the
// server takes it as one schema.
QString optionValue(const QString& schema) {
    QString quoted = schema;
    quoted.replace(u'"', QStringLiteral("\"\""));
    quoted = u'"' + quoted + u'"';
    quoted.replace(u'\\', QStringLiteral("\\\\"));
    quoted.replace(u' ', QStringLiteral("\\ "));
    return quoted;
}

// libpq's keywords and values for the connection properties.
std::vector<std::pair<QByteArray, QByteArray>>
connectionSettings(const ConnectionProperties& properties, const QString& user,
                   const QString& password) {
    std::vector<std::pair<QByteArray, QByteArray>> settings;
    auto add = [&](const char* keyword, const QString& value) {
        if (!value.isEmpty())
            settings.emplace_back(keyword, value.toUtf8());
    };
    add("host", firstOf(properties, {"Host", "Server"}));
    add("port", firstOf(properties, {"Port"}));
    add("dbname", firstOf(properties, {"Database", "Initial Catalog"}));
    const QString propertyUser = firstOf(properties, {"User ID", "User", "UID"});
    add("user", propertyUser.isEmpty() ? user : propertyUser);
    // A password may be a blank or start with one: taken as given.
    QString propertyPassword = properties.value(QStringLiteral("Password"));
    if (propertyPassword.isEmpty())
        propertyPassword = properties.value(QStringLiteral("PWD"));
    add("password", propertyPassword.isEmpty() ? password : propertyPassword);
    const QString timeout = firstOf(properties, {"Connect Timeout"});
    add("connect_timeout",
        timeout.isEmpty() ? QString::fromLatin1(defaultConnectTimeout) : timeout);
    add("sslmode", firstOf(properties, {"SSL Mode", "sslmode"}));
    add("application_name", QStringLiteral("VXUILib"));
    add("client_encoding", QStringLiteral("UTF8"));
    // Results are read in ISO form; ambiguous date input is month first, as the old engine read it.
    // Backslashes in quoted texts stay plain whatever the server, database or role says, and
    // names resolve in the repository's schema only (the system catalog still comes first): no
    // one's own schema can hold a table or function that stands in for the repository's.
    add("options", QStringLiteral("-c DateStyle=ISO,MDY -c extra_float_digits=1 "
                                  "-c standard_conforming_strings=on -c search_path=") +
                       optionValue(schemaOf(properties)));
    return settings;
}

QString commandWord(const QByteArray& statement) {
    for (const auto& token : dialect::tokenize(QString::fromUtf8(statement.left(64)))) {
        if (token.isSignificant())
            return token.text.toUpper();
    }
    return {};
}

// "[KTItem]" and "\"KTItem\"" name the same table as "KTItem".
QString plainTableName(const QString& table) {
    const auto tokens = dialect::tokenize(table.trimmed());
    return tokens.size() == 1 && tokens.front().isName() ? tokens.front().name() : table.trimmed();
}

} // namespace

struct PostgresDriver::Private {
    Session session;
    Catalog catalog{session};
    RowWriter writer{session, catalog};
    std::optional<PostgresDialect> dialect;
    bool caseInsensitiveText = false;
    quint64 streamCount = 0; // names the cursors of table streams

    QList<QByteArray> rewrite(const QString& sql) const {
        QList<QByteArray> statements;
        for (const QString& statement : dialect->rewriteStatements(sql))
            statements << statement.toUtf8();
        return statements;
    }
};

PostgresDriver::PostgresDriver()
    : d(std::make_unique<Private>()) {}

PostgresDriver::~PostgresDriver() {
    close();
}

QString PostgresDriver::name() const {
    return QStringLiteral("PostgreSQL");
}

void PostgresDriver::open(const ConnectionProperties& properties, const QString& user,
                          const QString& password) {
    close();
    d->session.open(connectionSettings(properties, user, password));
    try {
        // Case-blind text needs nondeterministic ICU collations (server 12 and later).
        const ResultHandle facts =
            d->session.run("SELECT current_setting('server_version_num')::int >= 120000 AND "
                           "EXISTS (SELECT 1 FROM pg_collation WHERE collprovider = 'i')");
        d->caseInsensitiveText = PQgetvalue(facts.get(), 0, 0)[0] == 't';
    } catch (...) {
        close();
        throw;
    }
    d->dialect.emplace(d->caseInsensitiveText);
}

void PostgresDriver::close() {
    d->session.close();
    d->catalog.clear();
    d->dialect.reset();
}

bool PostgresDriver::isOpen() const {
    return d->session.isOpen();
}

bool PostgresDriver::caseInsensitiveText() const {
    return d->caseInsensitiveText;
}

qint64 PostgresDriver::execute(const QString& sql) {
    d->session.connection();
    const QList<QByteArray> statements = d->rewrite(sql);
    if (statements.isEmpty())
        return -1;
    bool changesTables = false;
    for (const QByteArray& statement : statements) {
        const QString word = commandWord(statement);
        changesTables =
            changesTables || !(word == u"SELECT" || word == u"INSERT" || word == u"UPDATE" ||
                               word == u"DELETE" || word == u"WITH" || word == u"VALUES");
    }
    ResultHandle result;
    try {
        result = d->session.runAll(statements);
    } catch (const Error& error) {
        if (changesTables)
            d->catalog.clear();
        throw spelledAsWritten(error, sql);
    }
    if (changesTables)
        d->catalog.clear();
    const QByteArray command = PQcmdStatus(result.get());
    const bool changesRows = command.startsWith("INSERT") || command.startsWith("UPDATE") ||
                             command.startsWith("DELETE") || command.startsWith("MERGE");
    return changesRows ? QByteArray(PQcmdTuples(result.get())).toLongLong() : -1;
}

std::unique_ptr<RowStore> PostgresDriver::select(const QString& sql) {
    d->session.connection();
    const QList<QByteArray> statements = d->rewrite(sql);
    if (statements.isEmpty())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Command text was not set for the command object."));
    if (statements.size() > 1)
        throw Error(ErrorNumber::SyntaxError,
                    QStringLiteral("Characters found after end of SQL statement."));
    ResultHandle result;
    try {
        result = d->session.run(statements.front());
    } catch (const Error& error) {
        throw spelledAsWritten(error, sql);
    }
    return readResult(result.get(), d->catalog, sql);
}

std::unique_ptr<ResultStream> PostgresDriver::openStream(const QString& sql) {
    PGconn* connection = d->session.connection();
    // A cursor needs a transaction of its own: not inside one the caller has open.
    if (d->session.level() > 0)
        return Driver::openStream(sql);
    return std::make_unique<PostgresResultStream>(
        connection, d->catalog, sql, [this](const QString& text) {
            const QList<QByteArray> statements = d->rewrite(text);
            if (statements.isEmpty())
                throw Error(ErrorNumber::InvalidArgument,
                            QStringLiteral("Command text was not set for the command object."));
            if (statements.size() > 1)
                throw Error(ErrorNumber::SyntaxError,
                            QStringLiteral("Characters found after end of SQL statement."));
            return statements.front();
        });
}

std::unique_ptr<RowStore> PostgresDriver::selectTable(const QString& table) {
    d->session.connection();
    const CatalogTable& target = d->catalog.resolve(plainTableName(table));
    const QString sql = QStringLiteral("SELECT * FROM ") + QString::fromUtf8(target.quotedName());
    const ResultHandle result = d->session.run(sql.toUtf8());
    return readResult(result.get(), d->catalog, sql);
}

std::unique_ptr<RowStore> PostgresDriver::tableStructure(const QString& table) {
    d->session.connection();
    const CatalogTable& target = d->catalog.resolve(plainTableName(table));
    // The result's description alone: types and sizes from the catalogue, no row read.
    const QString sql =
        QStringLiteral("SELECT * FROM ") + QString::fromUtf8(target.quotedName()) + " LIMIT 0";
    const ResultHandle result = d->session.run(sql.toUtf8());
    return readResult(result.get(), d->catalog, sql);
}

std::unique_ptr<ResultStream> PostgresDriver::streamTable(const QString& table) {
    d->session.connection();
    const CatalogTable& target = d->catalog.resolve(plainTableName(table));
    const QByteArray query = "SELECT * FROM " + target.quotedName();
    const QByteArray name = "vx_rows_" + QByteArray::number(++d->streamCount);
    return std::make_unique<PostgresResultStream>(d->session, d->catalog, query, name);
}

void PostgresDriver::beginTransaction() {
    d->session.begin();
}

void PostgresDriver::beginAllOrNothingTransaction() {
    d->session.begin(Session::StatementGuard::Off);
}

void PostgresDriver::commitTransaction() {
    d->session.commit();
}

void PostgresDriver::rollbackTransaction() {
    d->session.rollback();
}

int PostgresDriver::transactionLevel() const {
    return d->session.level();
}

QList<TableEntry> PostgresDriver::tables() {
    return readTables(d->session);
}

QStringList PostgresDriver::indexNames() {
    return readIndexNames(d->session);
}

QList<ProviderTypeEntry> PostgresDriver::providerTypes() {
    d->session.connection();
    return postgresProviderTypes();
}

// A sequence lives beside the table whose ids it hands out.
void PostgresDriver::raiseSequence(const QString& sequence, const QString& table,
                                   const QString& column) {
    d->session.connection();
    const CatalogTable& target = d->catalog.resolve(plainTableName(table));
    const CatalogColumn* key = target.find(column);
    if (!key)
        throw Error(ErrorNumber::ColumnNotFound,
                    QStringLiteral("The table %1 has no column %2.").arg(table, column));
    const QByteArray name = quoteIdentifier(target.schema) + '.' + quoteIdentifier(sequence);
    const QByteArray literal = "'" + QByteArray(name).replace('\'', "''") + "'";
    // Its next value must lie above the highest id in use: raised only when it does not.
    const QByteArray raise =
        "SELECT setval(" + literal + ", t.m) FROM (SELECT MAX(" + quoteIdentifier(key->name) +
        ") AS m FROM " + target.quotedName() + ") AS t, " + name +
        " AS s WHERE t.m >= s.last_value + CASE WHEN s.is_called THEN 1 ELSE 0 END";
    // Made and raised in one transaction: no other session draws from it before it is raised.
    d->session.begin();
    try {
        // Looked up first: creating, even "if not exists", needs a right users may lack.
        const ResultHandle found = d->session.run("SELECT to_regclass(" + literal + ") IS NULL");
        if (PQgetvalue(found.get(), 0, 0)[0] == 't')
            d->session.run("CREATE SEQUENCE IF NOT EXISTS " + name + " AS integer");
        d->session.run(raise);
        d->session.commit();
    } catch (const Error& error) {
        if (d->session.level() > 0)
            d->session.rollback();
        // Another session made it at the same moment; its own raise covers the ids in use.
        if (error.conflict() != Conflict::UniqueViolation)
            throw;
    }
}

qint64 PostgresDriver::nextSequenceValue(const QString& sequence) {
    d->session.connection();
    const QByteArray literal = "'" + quoteIdentifier(sequence).replace('\'', "''") + "'";
    const ResultHandle result = d->session.run("SELECT nextval(" + literal + ")");
    return QByteArray(PQgetvalue(result.get(), 0, 0)).toLongLong();
}

QVariant PostgresDriver::insertRow(const QString& table, const QStringList& columns,
                                   const QVariantList& values, const QString& autoIncrementColumn) {
    d->session.connection();
    return d->writer.insert(table, columns, values, autoIncrementColumn);
}

qint64 PostgresDriver::updateRow(const QString& table, const QStringList& columns,
                                 const QVariantList& values, const QStringList& keyColumns,
                                 const QVariantList& keyValues, const QStringList& checkColumns,
                                 const QVariantList& checkValues) {
    d->session.connection();
    return d->writer.update(table, columns, values, keyColumns, keyValues, checkColumns,
                            checkValues);
}

qint64 PostgresDriver::deleteRow(const QString& table, const QStringList& keyColumns,
                                 const QVariantList& keyValues, const QStringList& checkColumns,
                                 const QVariantList& checkValues) {
    d->session.connection();
    return d->writer.remove(table, keyColumns, keyValues, checkColumns, checkValues);
}

std::unique_ptr<Driver> createPostgresDriver() {
    return std::make_unique<PostgresDriver>();
}

} // namespace vx
