#include "data/postgres/PostgresSession.h"

#include "data/SqlLog.h"
#include "data/postgres/PostgresErrors.h"

#include <QLoggingCategory>

namespace vx::postgres {

namespace {

Q_LOGGING_CATEGORY(postgresLog, "vx.postgres", QtWarningMsg)

const QByteArray savepoint = QByteArrayLiteral("SAVEPOINT vx_statement");
const QByteArray releaseSavepoint = QByteArrayLiteral("RELEASE SAVEPOINT vx_statement");
const Parameters noParameters;

// Server notices ("... already exists, skipping") are not errors and must not reach stderr.
void ignoreNotice(void*, const char*) {}

bool succeeded(const PGresult* result) {
    switch (PQresultStatus(result)) {
    case PGRES_COMMAND_OK:
    case PGRES_TUPLES_OK:
    case PGRES_EMPTY_QUERY:
        return true;
    default:
        return false;
    }
}

// Pointers into the parameters for libpq, valid while `parameters` lives.
std::vector<const char*> parameterValues(const Parameters& parameters) {
    std::vector<const char*> values;
    values.reserve(parameters.size());
    for (const auto& value : parameters)
        values.push_back(value ? value->constData() : nullptr);
    return values;
}

} // namespace

Session::Session() = default;
Session::~Session() = default;

void Session::open(const std::vector<std::pair<QByteArray, QByteArray>>& settings) {
    close();
    std::vector<const char*> keywords;
    std::vector<const char*> values;
    for (const auto& [keyword, value] : settings) {
        keywords.push_back(keyword.constData());
        values.push_back(value.constData());
    }
    keywords.push_back(nullptr);
    values.push_back(nullptr);
    ConnectionHandle connection(PQconnectdbParams(keywords.data(), values.data(), 0));
    if (!connection || PQstatus(connection.get()) != CONNECTION_OK)
        throw connectionError(connection.get(),
                              QStringLiteral("Cannot connect to the PostgreSQL server"));
    PQsetNoticeProcessor(connection.get(), ignoreNotice, nullptr);
    keepStandardStrings(connection.get());
    m_connection = std::move(connection);
    m_level = 0;
}

void Session::keepStandardStrings(PGconn* connection) {
    const char* value = PQparameterStatus(connection, "standard_conforming_strings");
    if (value && qstrcmp(value, "on") == 0)
        return;
    qCDebug(postgresLog) << "standard_conforming_strings was" << value << "- set on again";
    ResultHandle result(PQexec(connection, "SET standard_conforming_strings = on"));
    if (!result || !succeeded(result.get()))
        throw connectionError(connection,
                              QStringLiteral("The session cannot read quoted texts safely"));
}

void Session::close() {
    m_connection.reset(); // the server rolls back what was left open
    m_level = 0;
}

bool Session::isOpen() const {
    return m_connection != nullptr;
}

PGconn* Session::connection() const {
    if (!m_connection)
        throw Error(ErrorNumber::ObjectClosed,
                    QStringLiteral("Operation is not allowed when the object is closed."));
    return m_connection.get();
}

ResultHandle Session::run(const QByteArray& sql, const Parameters& parameters) {
    PGconn* connection = this->connection();
    if (m_level > 0)
        return runPipeline({{&sql, &parameters}});
    keepStandardStrings(connection);
    qCDebug(lcSql).noquote() << "postgres:" << QString::fromUtf8(sql);
    const auto values = parameterValues(parameters);
    ResultHandle result(PQexecParams(connection, sql.constData(), int(values.size()), nullptr,
                                     values.data(), nullptr, nullptr, 0));
    if (!result)
        throw connectionError(connection, QStringLiteral("The statement could not be sent"));
    if (!succeeded(result.get()))
        throw errorFromResult(result.get(), connection);
    return result;
}

ResultHandle Session::runAll(const QList<QByteArray>& statements) {
    if (statements.size() == 1)
        return run(statements.front());
    std::vector<Command> commands;
    for (const QByteArray& sql : statements)
        commands.push_back({&sql, &noParameters});
    return runPipeline(commands);
}

// Sends everything at once and reads the results in order. Outside a transaction the server
// runs the statements up to the sync as one implicit transaction; inside one, a savepoint
// around them undoes them alone when one fails.
ResultHandle Session::runPipeline(const std::vector<Command>& commands) {
    PGconn* connection = this->connection();
    keepStandardStrings(connection);
    const bool guarded = guardsStatements();
    std::vector<Command> queue;
    if (guarded)
        queue.push_back({&savepoint, &noParameters});
    queue.insert(queue.end(), commands.begin(), commands.end());
    if (guarded)
        queue.push_back({&releaseSavepoint, &noParameters});

    if (PQenterPipelineMode(connection) != 1)
        throw connectionError(connection, QStringLiteral("The statement could not be sent"));
    bool sent = true;
    for (const Command& command : queue) {
        qCDebug(lcSql).noquote() << "postgres:" << QString::fromUtf8(*command.sql);
        const auto values = parameterValues(*command.parameters);
        sent = sent && PQsendQueryParams(connection, command.sql->constData(), int(values.size()),
                                         nullptr, values.data(), nullptr, nullptr, 0) == 1;
    }
    sent = sent && PQpipelineSync(connection) == 1;
    if (!sent) {
        const Error error =
            connectionError(connection, QStringLiteral("The statement could not be sent"));
        close(); // a half-sent pipeline leaves the connection in an unknown state
        throw error;
    }

    const size_t firstCommand = guarded ? 1 : 0;
    ResultHandle last;
    ResultHandle failure;
    for (size_t i = 0; i < queue.size(); ++i) {
        // Each statement's results end with a null; a lost connection ends them all.
        while (PGresult* raw = PQgetResult(connection)) {
            ResultHandle result(raw);
            const ExecStatusType status = PQresultStatus(raw);
            if (status == PGRES_PIPELINE_ABORTED)
                continue;
            if (!succeeded(raw)) {
                if (!failure)
                    failure = std::move(result);
            } else if (i + 1 == firstCommand + commands.size()) {
                last = std::move(result);
            }
        }
        if (PQstatus(connection) != CONNECTION_OK)
            break;
    }
    if (PQstatus(connection) != CONNECTION_OK) {
        const Error error = connectionError(connection, QStringLiteral("The connection was lost"));
        close();
        throw error;
    }
    ResultHandle sync(PQgetResult(connection)); // PGRES_PIPELINE_SYNC
    PQexitPipelineMode(connection);

    if (failure) {
        const Error error = errorFromResult(failure.get(), connection);
        if (guarded)
            control("ROLLBACK TO SAVEPOINT vx_statement; RELEASE SAVEPOINT vx_statement");
        throw error;
    }
    return last;
}

void Session::control(const char* sql) {
    PGconn* connection = this->connection();
    qCDebug(lcSql).noquote() << "postgres:" << sql;
    ResultHandle result(PQexec(connection, sql));
    if (!result)
        throw connectionError(connection, QStringLiteral("The statement could not be sent"));
    if (!succeeded(result.get()))
        throw errorFromResult(result.get(), connection);
}

void Session::begin(StatementGuard guard) {
    if (level() < m_bareFrom) // the bare transaction ended
        m_bareFrom = 0;
    control(m_level == 0
                ? "BEGIN"
                : QByteArray("SAVEPOINT vx_level_" + QByteArray::number(m_level)).constData());
    ++m_level;
    if (guard == StatementGuard::Off && m_bareFrom == 0)
        m_bareFrom = m_level;
}

bool Session::guardsStatements() const {
    if (level() < m_bareFrom)
        m_bareFrom = 0;
    return m_level > 0 && m_bareFrom == 0;
}

void Session::commit() {
    if (level() == 0)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("No transaction is active."));
    const int depth = m_level - 1;
    if (depth > 0) {
        control(QByteArray("RELEASE SAVEPOINT vx_level_" + QByteArray::number(depth)).constData());
        m_level = depth;
        return;
    }
    PGconn* connection = this->connection();
    ResultHandle result(PQexec(connection, "COMMIT"));
    m_level = 0;
    if (!result)
        throw connectionError(connection, QStringLiteral("The transaction could not be committed"));
    if (!succeeded(result.get()))
        throw errorFromResult(result.get(), connection);
    // A transaction the server had already aborted "commits" as a rollback.
    if (qstrcmp(PQcmdStatus(result.get()), "ROLLBACK") == 0)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The transaction was already rolled back after an error."));
}

void Session::rollback() {
    if (level() == 0)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("No transaction is active."));
    const int depth = m_level - 1;
    m_level = depth;
    if (depth == 0) {
        control("ROLLBACK");
        return;
    }
    const QByteArray name = "vx_level_" + QByteArray::number(depth);
    control(
        QByteArray("ROLLBACK TO SAVEPOINT " + name + "; RELEASE SAVEPOINT " + name).constData());
}

int Session::level() const {
    // The server ends a transaction by itself only when the session is reset or lost.
    if (m_connection && m_level > 0 && PQtransactionStatus(m_connection.get()) == PQTRANS_IDLE)
        m_level = 0;
    return m_level;
}

} // namespace vx::postgres
