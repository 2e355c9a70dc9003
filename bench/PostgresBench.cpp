#include "PostgresBench.h"

#include "BenchRepository.h"
#include "data/Connection.h"
#include "data/ConnectionProperties.h"
#include "data/Driver.h"
#include "data/Recordset.h"
#include "data/dialect/PostgresDialect.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <libpq-fe.h>
#include <memory>

namespace vx::bench {
namespace {

struct ConnectionCloser {
    void operator()(PGconn* connection) const noexcept { PQfinish(connection); }
};
struct ResultClearer {
    void operator()(PGresult* result) const noexcept { PQclear(result); }
};
using RawConnection = std::unique_ptr<PGconn, ConnectionCloser>;
using RawResult = std::unique_ptr<PGresult, ResultClearer>;

RawConnection connectRaw(const QString& initString) {
    const ConnectionProperties properties = ConnectionProperties::parse(initString);
    const QByteArray host = properties.value(QStringLiteral("Host")).toUtf8();
    const QByteArray port =
        properties.value(QStringLiteral("Port"), QStringLiteral("5432")).toUtf8();
    const QByteArray database = properties.value(QStringLiteral("Database")).toUtf8();
    const QByteArray user = properties.value(QStringLiteral("User ID")).toUtf8();
    const QByteArray password = properties.value(QStringLiteral("Password")).toUtf8();
    const char* keys[] = {"host", "port", "dbname", "user", "password", nullptr};
    const char* values[] = {host.constData(), port.constData(),     database.constData(),
                            user.constData(), password.constData(), nullptr};
    RawConnection connection(PQconnectdbParams(keys, values, 0));
    if (PQstatus(connection.get()) != CONNECTION_OK) {
        std::fprintf(stderr, "libpq: %s\n", PQerrorMessage(connection.get()));
        return nullptr;
    }
    return connection;
}

bool runRaw(PGconn* connection, const char* sql) {
    RawResult result(PQexec(connection, sql));
    const ExecStatusType status = PQresultStatus(result.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        std::fprintf(stderr, "libpq: %s\n", PQerrorMessage(connection));
        return false;
    }
    return true;
}

// Keeps the reads from being optimised away.
volatile std::size_t rawReadSink = 0;

// The baseline: the whole result in libpq's memory, every value read once.
qint64 rawRead(PGconn* connection, const QByteArray& sql) {
    RawResult result(PQexec(connection, sql.constData()));
    if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) {
        std::fprintf(stderr, "libpq: %s\n", PQerrorMessage(connection));
        return -1;
    }
    const int rows = PQntuples(result.get());
    const int columns = PQnfields(result.get());
    std::size_t touched = 0;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column)
            touched += std::size_t(*PQgetvalue(result.get(), row, column));
    }
    rawReadSink = touched;
    return rows;
}

double bestSecondsOf(int runs, const std::function<void()>& work) {
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(
            best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

} // namespace

bool measurePostgres(const QString& initString, int documents) {
    std::printf("\n%d documents on PostgreSQL: building the tables ...\n", documents);
    std::fflush(stdout);
    Connection connection;
    connection.open(initString);
    RawConnection raw = connectRaw(initString);
    if (!raw)
        return false;
    // Declared as the repository tool declares them; the dialect step makes them native.
    connection.execute(QStringLiteral(
        "CREATE TABLE KTItem (itemid LONG NOT NULL, idx_date DATETIME, username VARCHAR(50), "
        "type LONG, groupid LONG, deleted YESNO, CONSTRAINT pk_KTItem PRIMARY KEY (itemid))"));
    connection.execute(QStringLiteral(
        "CREATE TABLE Invoices (itemid LONG NOT NULL, Customer VARCHAR(50), InvoiceNo LONG, "
        "Region VARCHAR(20), Paid YESNO, CONSTRAINT pk_Invoices PRIMARY KEY (itemid))"));
    const QByteArray fill =
        QStringLiteral(
            "INSERT INTO ktitem SELECT g, timestamp '2000-01-01' + g * interval '7 minutes', "
            "'user' || lpad((g %% 20)::text, 2, '0'), g %% 8, 1, CASE WHEN g %% 50 = 0 THEN -1 "
            "ELSE 0 END FROM generate_series(1::bigint, %1) g; "
            "INSERT INTO invoices SELECT g, 'Customer ' || lpad(((g * 7919) %% 20000)::text, 5, "
            "'0') || ' Ltd', (g * 104729) %% 1000000, (ARRAY['North','South','East','West',"
            "'Central','Coast','Inland','Islands','Harbour','Valley'])[g %% 10 + 1], "
            "CASE WHEN g %% 2 = 1 THEN -1 ELSE 0 END FROM generate_series(1::bigint, %1) g; "
            "ANALYZE ktitem; ANALYZE invoices")
            .arg(documents)
            .replace(QStringLiteral("%%"), QStringLiteral("%"))
            .toUtf8();
    bool ok = runRaw(raw.get(), fill.constData());

    if (ok) {
        // The same statement for both: what the driver sends after its dialect step.
        const QString query = BenchRepository::hitListQuery();
        const QByteArray native = PostgresDialect().rewrite(query).toUtf8();
        qint64 rawRows = 0;
        qsizetype recordsetRows = 0;
        rawRead(raw.get(), native); // warms the server's cache for both alike
        const double rawSeconds = bestSecondsOf(3, [&] { rawRows = rawRead(raw.get(), native); });
        const double openSeconds = bestSecondsOf(3, [&] {
            Recordset recordset;
            recordset.open(query, connection, CursorType::Keyset, LockType::Optimistic);
            recordsetRows = recordset.recordCount();
        });
        const double selectSeconds = bestSecondsOf(3, [&] { connection.driver().select(query); });
        std::printf("  %lld rows\n", (long long)rawRows);
        std::printf("  %-44s %9.3f s  %7.2fx (p)\n",
                    "(p) libpq: PQexec + PQgetvalue on every value", rawSeconds, 1.0);
        std::printf("  %-44s %9.3f s  %7.2fx (p)\n", "(q) Recordset::open", openSeconds,
                    openSeconds / rawSeconds);
        std::printf("  %-44s %9.3f s  %7.2fx (p)\n", "    of which Driver::select", selectSeconds,
                    selectSeconds / rawSeconds);
        if (rawRows != recordsetRows) {
            std::printf("  WRONG RESULT: libpq %lld rows, record set %lld\n", (long long)rawRows,
                        (long long)recordsetRows);
            ok = false;
        }
    }
    // Leaves the database as it was found.
    ok = runRaw(raw.get(), "DROP TABLE IF EXISTS invoices; DROP TABLE IF EXISTS ktitem") && ok;
    return ok;
}

} // namespace vx::bench
