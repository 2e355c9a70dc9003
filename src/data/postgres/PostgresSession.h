#pragma once

#include "data/postgres/PostgresHandles.h"

#include <QByteArray>
#include <QList>
#include <optional>
#include <utility>
#include <vector>

namespace vx::postgres {

// Text parameters of one statement ($1, $2 ...); an empty optional is SQL null.
using Parameters = std::vector<std::optional<QByteArray>>;

// One server connection and the transactions open on it. Statements run as the old engine ran
// them: a failing statement inside a transaction undoes only itself and leaves the transaction
// usable (PostgreSQL would abort the whole transaction), so each one there runs under a
// savepoint, sent in the same round trip.
class Session {
public:
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Connection keywords and values as libpq takes them ("host", "port", "dbname" ...).
    void open(const std::vector<std::pair<QByteArray, QByteArray>>& settings);
    void close();
    bool isOpen() const;
    // Throws ObjectClosed when not open.
    PGconn* connection() const;

    // One statement, with parameters. Returns its result; a failure throws vx::Error.
    ResultHandle run(const QByteArray& sql, const Parameters& parameters = {});
    // Several statements as one unit: all take effect or none. Returns the last one's result.
    ResultHandle runAll(const QList<QByteArray>& statements);

    // Off: statements inside run bare, and the first failure aborts the whole transaction,
    // which its caller rolls back (nested transactions inside it run bare as well).
    enum class StatementGuard { On, Off };
    void begin(StatementGuard guard = StatementGuard::On);
    void commit();
    void rollback();
    int level() const;

private:
    struct Command {
        const QByteArray* sql;
        const Parameters* parameters;
    };
    ResultHandle runPipeline(const std::vector<Command>& commands);
    void control(const char* sql);
    // Every literal the library writes doubles quotes and leaves backslashes alone: a session
    // that reads backslashes as escapes (set so by the server, or by a function a query called)
    // is put back first.
    void keepStandardStrings(PGconn* connection);

    ConnectionHandle m_connection;
    mutable int m_level = 0;    // corrected when the server ended the transaction
    mutable int m_bareFrom = 0; // the level from which statements run bare; 0: none
    bool guardsStatements() const;
};

} // namespace vx::postgres
