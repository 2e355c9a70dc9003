#pragma once

#include "data/Connection.h"
#include "data/Driver.h"
#include "support/ErrorNumberOf.h"
#include "support/PostgresServer.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <string>

namespace vx::test {

enum class Engine { Sqlite, Postgres };

// Each test gets an empty database of its own and a connection to it: a file in a temporary
// folder, or a database on the process's throw-away PostgreSQL server (skipped when this machine
// cannot run one).
class EngineDatabase : public ::testing::Test {
protected:
    virtual Engine engine() const = 0;

    void SetUp() override {
        if (engine() == Engine::Sqlite) {
            connectionText = QStringLiteral("Provider=SQLite;Create If Missing=True;Data Source=") +
                             m_folder.filePath(QStringLiteral("repository.db"));
        } else {
            PostgresServer& server = PostgresServer::instance();
            if (!server.isAvailable())
                GTEST_SKIP() << server.skipReason().toStdString();
            connectionText = server.createDatabase();
            ASSERT_FALSE(connectionText.isEmpty()) << server.failure().toStdString();
        }
        connection.open(connectionText);
    }

    bool onPostgres() const { return engine() == Engine::Postgres; }
    Driver& driver() const { return connection.driver(); }
    // Another session on the same database.
    Connection connect() const {
        Connection other;
        other.open(connectionText);
        return other;
    }
    // The one value `sql` selects, -1 when it selects no single row.
    qint64 count(const QString& sql) const {
        const auto rows = driver().select(sql);
        return rows->rowCount() == 1 ? rows->value(0, 0).toLongLong() : -1;
    }

    QString connectionText;
    Connection connection;

private:
    QTemporaryDir m_folder;
};

// The same tests on both engines: instantiate with
// ::testing::Values(Engine::Sqlite, Engine::Postgres), engineName.
class EngineTest : public EngineDatabase, public ::testing::WithParamInterface<Engine> {
protected:
    Engine engine() const override { return GetParam(); }
};

inline std::string engineName(const ::testing::TestParamInfo<Engine>& info) {
    return info.param == Engine::Postgres ? "postgres" : "sqlite";
}

// Tests of the server alone.
class PostgresDatabase : public EngineDatabase {
protected:
    Engine engine() const override { return Engine::Postgres; }
};

} // namespace vx::test
