#pragma once

#include <QString>
#include <memory>

namespace vx::test {

// A throw-away PostgreSQL server for the tests of one process: initialised in a temporary
// folder and listening on a free loopback port (its socket in the same folder), started on
// first use and stopped by its own process id when the process ends. Run as root, the server
// runs as the "postgres" user, which initdb requires. Databases are made on demand, so each
// test can start from an empty one.
class PostgresServer {
public:
    // The process's server, started on the first call.
    static PostgresServer& instance();
    ~PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    // False when this machine cannot run one (no server binaries, no user to run them as);
    // skipReason() then says why, for GTEST_SKIP.
    bool isAvailable() const;
    QString skipReason() const;
    // False when it should have started but did not; failure() tells why, with the server log.
    bool isRunning() const;
    QString failure() const;

    // A new empty database; returns its init string ("Provider=PostgreSQL;Host=127.0.0.1;
    // Port=...;Database=...;User ID=...;Password=..."). Empty on failure, with failure() set.
    QString createDatabase();
    // A new database copied from `templateDatabase` (which nobody may be connected to).
    QString createDatabaseFrom(const QString& templateDatabase);
    // The init string of a database without the password, for opens that give it separately.
    QString initStringWithoutPassword(const QString& database) const;
    QString password() const;
    quint16 port() const;

private:
    PostgresServer();
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::test
