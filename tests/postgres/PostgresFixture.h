#pragma once

#include "data/Connection.h"
#include "data/ConnectionProperties.h"
#include "data/Error.h"
#include "data/RowStore.h"
#include "data/postgres/PostgresDriver.h"
#include "support/PostgresServer.h"

#include <gtest/gtest.h>

namespace vx::test {

// Each test gets an empty database on the process's throw-away server, and a driver on it.
class PostgresFixture : public ::testing::Test {
protected:
    void SetUp() override {
        PostgresServer& server = PostgresServer::instance();
        if (!server.isAvailable())
            GTEST_SKIP() << server.skipReason().toStdString();
        ASSERT_TRUE(server.isRunning()) << server.failure().toStdString();
        initString = server.createDatabase();
        ASSERT_FALSE(initString.isEmpty()) << server.failure().toStdString();
        // Until the registry knows the provider by itself.
        registerDriver(QStringLiteral("PostgreSQL"), [] { return createPostgresDriver(); });
        driver = openDriver();
    }

    std::unique_ptr<PostgresDriver> openDriver() const {
        auto opened = std::make_unique<PostgresDriver>();
        opened->open(ConnectionProperties::parse(initString), {}, {});
        return opened;
    }

    Connection connect() const {
        Connection connection;
        connection.open(initString);
        return connection;
    }

    static int indexOf(const RowStore& rows, const QString& name) {
        for (int i = 0; i < rows.columnCount(); ++i) {
            if (rows.columns()[i].name == name)
                return i;
        }
        ADD_FAILURE() << "no column " << name.toStdString();
        return 0;
    }

    qint64 count(const QString& sql) const {
        const auto rows = driver->select(sql);
        return rows->rowCount() == 1 ? rows->value(0, 0).toLongLong() : -1;
    }

    QString initString;
    std::unique_ptr<PostgresDriver> driver;
};

// Runs `call`, expecting a vx::Error with `number`; returns its description.
template <typename Call>
QString postgresErrorOf(Call&& call, qint32 number) {
    try {
        call();
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), number) << error.description().toStdString();
        return error.description();
    }
    ADD_FAILURE() << "no error was raised";
    return {};
}

} // namespace vx::test
