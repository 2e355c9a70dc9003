// Measures materialising the hit list's query into a record set against stepping it through the
// engine's C API, in one run, on repositories of 100,000 and 1,000,000 documents.
//
//   vxbench_data [documents ...]     (default: 100000 1000000)
//
// Then the same query on PostgreSQL against a raw libpq loop: on the server VX_BENCH_PG names
// ("Provider=PostgreSQL;Host=...;Port=...;Database=...;User ID=...;Password=..."), otherwise on
// a throw-away server started here when this machine can run one.

#include "BenchRepository.h"
#include "PostgresBench.h"
#include "data/Connection.h"
#include "data/ConnectionProperties.h"
#include "data/DataType.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/RowStore.h"
#include "support/PostgresServer.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <sqlite3.h>
#include <vector>

#ifdef __linux__
#include <unistd.h>
#endif

using namespace vx;

namespace {

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The best of a few runs: the figures compare work, not the machine's other load.
double bestOf(int runs, const std::function<void()>& work) {
    double best = 1e300;
    for (int i = 0; i < runs; ++i)
        best = std::min(best, secondsOf(work));
    return best;
}

// Resident memory in bytes, or -1 where the platform does not tell.
qint64 residentBytes() {
#ifdef __linux__
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toLongLong() * sysconf(_SC_PAGESIZE) : -1;
#else
    return -1;
#endif
}

struct Statement {
    sqlite3* db = nullptr;
    sqlite3_stmt* statement = nullptr;
    explicit Statement(const QString& path) {
        sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX,
                        nullptr);
        if (sqlite3_prepare_v2(db, bench::BenchRepository::hitListQuery().toUtf8().constData(), -1,
                               &statement, nullptr) != SQLITE_OK) {
            std::fprintf(stderr, "prepare: %s\n", sqlite3_errmsg(db));
            std::exit(1);
        }
    }
    ~Statement() {
        sqlite3_finalize(statement);
        sqlite3_close_v2(db);
    }
};

// (a) Only stepping: the engine's own cost.
qint64 stepOnly(const QString& path) {
    Statement query(path);
    qint64 rows = 0;
    while (sqlite3_step(query.statement) == SQLITE_ROW)
        ++rows;
    return rows;
}

// (b) The plain way: every row a vector of QVariant.
qint64 variantRows(const QString& path) {
    Statement query(path);
    const int columns = sqlite3_column_count(query.statement);
    std::vector<std::vector<QVariant>> rows;
    while (sqlite3_step(query.statement) == SQLITE_ROW) {
        std::vector<QVariant> row;
        row.reserve(size_t(columns));
        for (int i = 0; i < columns; ++i) {
            switch (sqlite3_column_type(query.statement, i)) {
            case SQLITE_INTEGER:
                row.emplace_back(qint64(sqlite3_column_int64(query.statement, i)));
                break;
            case SQLITE_FLOAT:
                row.emplace_back(sqlite3_column_double(query.statement, i));
                break;
            case SQLITE_TEXT:
                row.emplace_back(QString::fromUtf8(
                    reinterpret_cast<const char*>(sqlite3_column_text(query.statement, i)),
                    sqlite3_column_bytes(query.statement, i)));
                break;
            default:
                row.emplace_back();
            }
        }
        rows.push_back(std::move(row));
    }
    return qint64(rows.size());
}

// The values' own bytes: 4 per integer, 8 per date or double, 2 per Boolean, text in UTF-8.
qint64 rawBytes(const QString& path) {
    Statement query(path);
    const int columns = sqlite3_column_count(query.statement);
    std::vector<DataType> types;
    for (int i = 0; i < columns; ++i) {
        const char* declared = sqlite3_column_decltype(query.statement, i);
        types.push_back(parseDeclaredType(QString::fromUtf8(declared ? declared : "")).type);
    }
    qint64 bytes = 0;
    while (sqlite3_step(query.statement) == SQLITE_ROW) {
        for (int i = 0; i < columns; ++i) {
            if (sqlite3_column_type(query.statement, i) == SQLITE_NULL)
                continue;
            switch (storageKindOf(types[size_t(i)])) {
            case StorageKind::Integer:
                bytes += types[size_t(i)] == DataType::Boolean ? 2 : 4;
                break;
            case StorageKind::Real:
            case StorageKind::DateTime:
                bytes += 8;
                break;
            case StorageKind::Text:
                bytes += sqlite3_column_bytes(query.statement, i);
            }
        }
    }
    return bytes;
}

// (g) Writing rows one by one, as the repository tool fills a repository: prepared inserts
// through the C API against Driver::insertRow, each in one transaction.
void rawInserts(const QString& path, int rows) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                    nullptr);
    sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(db,
                       "INSERT INTO Copied (itemid, Customer, InvoiceNo, Paid) "
                       "VALUES (?, ?, ?, ?)",
                       -1, &insert, nullptr);
    char text[32];
    for (int id = 1; id <= rows; ++id) {
        const int length = std::snprintf(text, sizeof text, "Customer %05d Ltd", id % 20000);
        sqlite3_bind_int(insert, 1, id);
        sqlite3_bind_text(insert, 2, text, length, SQLITE_TRANSIENT);
        sqlite3_bind_int(insert, 3, id * 7);
        sqlite3_bind_int(insert, 4, id % 2 ? -1 : 0);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close_v2(db);
}

void driverInserts(Connection& connection, int rows) {
    const QStringList columns{QStringLiteral("itemid"), QStringLiteral("Customer"),
                              QStringLiteral("InvoiceNo"), QStringLiteral("Paid")};
    const QString table = QStringLiteral("Copied");
    Transaction transaction(connection);
    Driver& driver = connection.driver();
    for (int id = 1; id <= rows; ++id)
        driver.insertRow(table, columns,
                         {id, QStringLiteral("Customer %1 Ltd").arg(id % 20000, 5, 10, QChar(u'0')),
                          id * 7, id % 2 == 1},
                         {});
    // Dropped with the transaction, so every run starts from the same table.
}

void line(const char* label, double seconds, double baseline) {
    std::printf("  %-44s %9.3f s  %7.2fx (a)\n", label, seconds, seconds / baseline);
}

double megabytes(qint64 bytes) {
    return double(bytes) / (1024.0 * 1024.0);
}

bool measure(int documents) {
    QTemporaryDir folder;
    const QString database = folder.filePath(QStringLiteral("bench.db"));
    const QString dataLink = folder.filePath(QStringLiteral("bench.udl"));
    std::printf("\n%d documents: building the repository ...\n", documents);
    std::fflush(stdout);
    const double buildSeconds =
        secondsOf([&] { bench::BenchRepository::build(database, documents); });
    writeDataLinkFile(dataLink, QStringLiteral("Provider=SQLite;Data Source=bench.db"));
    std::printf("  built in %.1f s\n", buildSeconds);

    stepOnly(database); // brings the file into the cache for everyone alike
    Connection connection;
    connection.open(QStringLiteral("File Name=") + dataLink +
                    QStringLiteral(";Jet OLEDB:Database Password = ' morvantel'"));
    auto openRecordset = [&] {
        Recordset recordset;
        recordset.open(bench::BenchRepository::hitListQuery(), connection, CursorType::Keyset,
                       LockType::Optimistic);
        return recordset;
    };
    // Resident growth is taken on the first open, before freed memory can be reused.
    const qint64 residentBefore = residentBytes();
    Recordset kept = openRecordset();
    const qint64 residentDelta = residentBefore < 0 ? -1 : residentBytes() - residentBefore;

    qint64 rows = 0;
    const double stepping = bestOf(3, [&] { rows = stepOnly(database); });
    const double variants = bestOf(3, [&] { variantRows(database); });
    const double opening = bestOf(3, [&] { openRecordset(); });
    const double selecting =
        bestOf(3, [&] { connection.driver().select(bench::BenchRepository::hitListQuery()); });

    double sorting = 1e300;
    for (int run = 0; run < 3; ++run) {
        kept.setSort(QString());
        sorting = std::min(sorting, secondsOf([&] {
                               kept.setSort(u'[' + bench::BenchRepository::sortColumn() +
                                            QStringLiteral("] ASC"));
                           }));
    }
    const int sortColumn = kept.fieldIndex(bench::BenchRepository::sortColumn());
    qsizetype found = 0;
    const double finding =
        bestOf(3, [&] { found = kept.find(sortColumn, QStringLiteral("Nobody of that name")); });
    connection.execute(QStringLiteral("CREATE TABLE Copied (itemid LONG, Customer VARCHAR(50), "
                                      "InvoiceNo LONG, Paid YESNO)"));
    const double rawInserting = bestOf(2, [&] { rawInserts(database, documents); });
    const double driverInserting = bestOf(2, [&] { driverInserts(connection, documents); });
    const qint64 raw = rawBytes(database);
    const qint64 stored = qint64(kept.rows().memoryBytes());

    std::printf("  %lld rows of %d columns; raw value bytes %.1f MB\n", rows, kept.fieldCount(),
                megabytes(raw));
    line("(a) C API: step the query", stepping, stepping);
    line("(b) C API: step into std::vector<QVariant> rows", variants, stepping);
    line("(c) Recordset::open", opening, stepping);
    line("    of which Driver::select (materialising)", selecting, stepping);
    line("(d) setSort on a text column", sorting, stepping);
    line("(e) Recordset::find of a missing text", finding, stepping);
    std::printf("  (f) memory: RowStore %.1f MB (%.2fx raw), resident growth %.1f MB (%.2fx raw)\n",
                megabytes(stored), double(stored) / double(raw), megabytes(residentDelta),
                double(residentDelta) / double(raw));
    std::printf("  (g) %d rows by Driver::insertRow %.3f s against prepared C API inserts "
                "%.3f s: %.2fx\n",
                documents, driverInserting, rawInserting, driverInserting / rawInserting);
    if (found != -1 || kept.recordCount() != rows) {
        std::printf("  WRONG RESULT: find gave %lld, record count %lld\n", (long long)found,
                    (long long)kept.recordCount());
        return false;
    }
    if (documents < 1000000)
        return true;
    const bool openOk = opening <= 2.5 * stepping && opening < variants;
    const bool sortOk = sorting < 0.5;
    const bool findOk = finding < 0.05;
    const bool memoryOk = stored < 2 * raw && (residentDelta < 0 || residentDelta < 2 * raw);
    std::printf("  targets: (c) <= 2.5x (a) and < (b): %s; (d) < 0.5 s: %s; (e) < 50 ms: %s; "
                "memory < 2x raw: %s\n",
                openOk ? "met" : "MISSED", sortOk ? "met" : "MISSED", findOk ? "met" : "MISSED",
                memoryOk ? "met" : "MISSED");
    return openOk && sortOk && findOk && memoryOk;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(QByteArray(argv[i]).toInt());
    if (sizes.empty())
        sizes = {100000, 1000000};
    bool allMet = true;
    try {
        for (int documents : sizes)
            allMet = measure(documents) && allMet;
        const QString named = qEnvironmentVariable("VX_BENCH_PG");
        test::PostgresServer* server = nullptr;
        if (named.isEmpty()) {
            server = &test::PostgresServer::instance();
            if (!server->isAvailable() || !server->isRunning()) {
                std::printf(
                    "\nPostgreSQL skipped: %s\n",
                    qPrintable(server->isAvailable() ? server->failure() : server->skipReason()));
                server = nullptr;
            }
        }
        if (!named.isEmpty() || server) {
            for (int documents : sizes) {
                const QString database = server ? server->createDatabase() : named;
                if (database.isEmpty()) {
                    std::fprintf(stderr, "no database: %s\n", qPrintable(server->failure()));
                    return 2;
                }
                allMet = bench::measurePostgres(database, documents) && allMet;
            }
        }
    } catch (const Error& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 2;
    }
    return allMet ? 0 : 1;
}
