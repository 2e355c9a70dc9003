// A large result in the hit list, in one run per engine: from DoQuery to the first painted grid
// against a Qt view over a lazily fetching QSqlQueryModel on the same query, and from DoQuery to
// the whole result in the grid against the engine's own loop over every value.
// Usage: vxbench_results [--sqlite-only] [documents ...]   (default: 100000 1000000)
#include "BenchSession.h"
#include "companions/DefaultCompanions.h"
#include "core/SampleBuilder.h"
#include "data/ConnectionProperties.h"
#include "data/RowStore.h"
#include "data/dialect/PostgresDialect.h"
#include "data/dialect/SqliteDialect.h"
#include "hitlist/VXHitList.h"
#include "server/ControlFactory.h"
#include "session/Settings.h"
#include "session/UiServices.h"
#include "support/PostgresServer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlQueryModel>
#include <QTableView>
#include <QTemporaryDir>
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <functional>
#include <libpq-fe.h>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <vector>

using namespace vx;

namespace {

// The empty search: every document, in item id order (the remembered sort's default).
const QString ResultQuery = QStringLiteral(
    "SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS IndexDate, "
    "Invoices.InvoiceNo AS [Invoice number], Invoices.Customer AS [Customer], "
    "Invoices.Status AS [Status], Invoices.Amount AS [Amount], "
    "Invoices.InvoiceDate AS [Invoice date], Invoices.Paid AS [Paid], "
    "Invoices.Categories AS [Categories], Invoices.Notes AS [Notes] "
    "FROM ktitem, Invoices WHERE ktitem.itemid = Invoices.itemid AND ktitem.deleted = 0 "
    "ORDER BY ktitem.itemid");

double seconds(const QElapsedTimer& timer) {
    return double(timer.nsecsElapsed()) / 1e9;
}

// Notes the first paint of a view's viewport after arm().
class PaintWatch : public QObject {
public:
    explicit PaintWatch(QAbstractScrollArea* view)
        : m_view(view) {
        view->viewport()->installEventFilter(this);
    }
    void arm() {
        m_painted = false;
        m_timer.start();
    }
    // Runs the event loop until the viewport has painted; the seconds since arm(). The loop
    // sleeps between events: a spinning loop would take a core from the reading thread.
    double waitForPaint() {
        while (!m_painted)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        return m_at;
    }
    const QElapsedTimer& timer() const { return m_timer; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched == m_view->viewport() && !m_painted &&
            m_timer.isValid()) {
            m_painted = true;
            m_at = seconds(m_timer);
        }
        return false;
    }

private:
    QAbstractScrollArea* m_view;
    QElapsedTimer m_timer;
    bool m_painted = false;
    double m_at = 0;
};

struct Figures {
    qsizetype rows = 0;
    double firstPaint = 0;
    double lazyQtPaint = 0;
    double fullLoad = 0;
    double rawLoop = 0;
};

// Each figure is the best of this many runs.
constexpr int Runs = 5;

// Keeps the raw loops' reads from being optimised away.
volatile std::size_t sink = 0;

double bestOf(int runs, const std::function<double()>& run) {
    double best = 1e9;
    for (int i = 0; i < runs; ++i)
        best = std::min(best, run());
    return best;
}

// The engine's own loop, doing the work a client must do to hold the rows: the statement
// stepped to its end, every value read as the type the engine holds it in (integers and reals
// as numbers, text copied out into one buffer), as the hit list's store holds them.
double rawSqlite(const QString& path, const QByteArray& sql, qsizetype& rows) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr);
    QElapsedTimer timer;
    timer.start();
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &statement, nullptr);
    const int columns = sqlite3_column_count(statement);
    qsizetype count = 0;
    std::vector<qint64> integers;
    std::vector<double> reals;
    std::string text;
    for (; sqlite3_step(statement) == SQLITE_ROW; ++count) {
        for (int c = 0; c < columns; ++c) {
            switch (sqlite3_column_type(statement, c)) {
            case SQLITE_INTEGER:
                integers.push_back(sqlite3_column_int64(statement, c));
                break;
            case SQLITE_FLOAT:
                reals.push_back(sqlite3_column_double(statement, c));
                break;
            case SQLITE_NULL:
                break;
            default: {
                const auto* value =
                    reinterpret_cast<const char*>(sqlite3_column_text(statement, c));
                text.append(value, std::size_t(sqlite3_column_bytes(statement, c)));
            }
            }
        }
    }
    sink = integers.size() + reals.size() + text.size();
    sqlite3_finalize(statement);
    const double elapsed = seconds(timer);
    sqlite3_close_v2(db);
    rows = count;
    return elapsed;
}

PGconn* connectLibpq(const QString& initString) {
    const ConnectionProperties properties = ConnectionProperties::parse(initString);
    const QByteArray conninfo =
        QStringLiteral("host=%1 port=%2 dbname=%3 user=%4 password=%5")
            .arg(properties.value("Host"), properties.value("Port"), properties.value("Database"),
                 properties.value("User ID"), properties.value("Password"))
            .toUtf8();
    return PQconnectdb(conninfo.constData());
}

// libpq's own loop, doing the work a client must do to hold the rows: the query run in one
// result (text format, as a plain PQexec gives it), then every value turned into a value of its
// type - integers and reals parsed, dates and times parsed to seconds, text copied out into
// one buffer - as the hit list's store holds them. Reading only PQgetvalue's pointers would
// leave out the decoding every client needs.
double rawLibpq(const QString& initString, const QByteArray& sql, qsizetype& rows) {
    PGconn* connection = connectLibpq(initString);
    QElapsedTimer timer;
    timer.start();
    PGresult* result = PQexec(connection, sql.constData());
    const int count = PQntuples(result);
    const int columns = PQnfields(result);
    std::vector<Oid> types;
    for (int c = 0; c < columns; ++c)
        types.push_back(PQftype(result, c));
    std::vector<qint64> integers;
    std::vector<double> reals;
    std::string text;
    integers.reserve(std::size_t(count) * 4);
    reals.reserve(std::size_t(count));
    for (int row = 0; row < count; ++row) {
        for (int c = 0; c < columns; ++c) {
            if (PQgetisnull(result, row, c))
                continue;
            const char* value = PQgetvalue(result, row, c);
            const int size = PQgetlength(result, row, c);
            switch (types[std::size_t(c)]) {
            case 16: // bool
                integers.push_back(value[0] == 't' ? -1 : 0);
                break;
            case 20: // int8, int2, int4
            case 21:
            case 23: {
                qint64 number = 0;
                std::from_chars(value, value + size, number);
                integers.push_back(number);
                break;
            }
            case 700: // float4, float8, numeric
            case 701:
            case 1700: {
                double number = 0;
                std::from_chars(value, value + size, number);
                reals.push_back(number);
                break;
            }
            case 1082: // date, timestamp: "YYYY-MM-DD[ HH:MM:SS]"
            case 1114: {
                qint64 packed = 0;
                parseStoredDateTime(value, size, packed);
                integers.push_back(packed);
                break;
            }
            default:
                text.append(value, std::size_t(size));
            }
        }
    }
    sink = integers.size() + reals.size() + text.size();
    PQclear(result);
    const double elapsed = seconds(timer);
    PQfinish(connection);
    rows = count;
    return elapsed;
}

// Writing a document row by row costs a round trip per row: the sample is written for this
// many documents and the rows the query reads are copied on the server for the rest.
constexpr int ServerBaseDocuments = 2000;

bool runOnServer(PGconn* connection, const QByteArray& sql, PGresult** rows = nullptr) {
    PGresult* result = PQexec(connection, sql.constData());
    const ExecStatusType status = PQresultStatus(result);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        std::printf("  server: %s\n", PQresultErrorMessage(result));
        PQclear(result);
        return false;
    }
    if (rows)
        *rows = result;
    else
        PQclear(result);
    return true;
}

// Copies the item and group rows of the first `base` documents, item ids shifted by a multiple
// of `base`, until there are `documents`: one INSERT ... SELECT over generate_series per table.
bool multiplyOnServer(const QString& initString, int base, int documents) {
    std::unique_ptr<PGconn, decltype(&PQfinish)> connection(connectLibpq(initString), PQfinish);
    const int copies = (documents + base - 1) / base - 1;
    for (const char* table : {"ktitem", "invoices"}) {
        PGresult* columns = nullptr;
        const QByteArray list =
            QByteArray("SELECT c.table_name, c.column_name FROM information_schema.columns c "
                       "WHERE lower(c.table_name) = '") +
            table + "' AND c.table_schema = current_schema() ORDER BY c.ordinal_position";
        if (!runOnServer(connection.get(), list, &columns) || PQntuples(columns) == 0) {
            PQclear(columns);
            return false;
        }
        const QByteArray name = QByteArray("\"") + PQgetvalue(columns, 0, 0) + '"';
        QByteArrayList names;
        QByteArrayList values;
        for (int row = 0; row < PQntuples(columns); ++row) {
            const QByteArray column = QByteArray("\"") + PQgetvalue(columns, row, 1) + '"';
            names << column;
            values << (column.toLower() == "\"itemid\""
                           ? "t." + column + " + g * " + QByteArray::number(base)
                           : "t." + column);
        }
        PQclear(columns);
        const QByteArray copy = "INSERT INTO " + name + " (" + names.join(", ") + ") SELECT " +
                                values.join(", ") + " FROM " + name +
                                " t CROSS JOIN generate_series(1, " + QByteArray::number(copies) +
                                ") g WHERE t.\"itemid\" + g * " + QByteArray::number(base) +
                                " <= " + QByteArray::number(documents);
        if (!runOnServer(connection.get(), copy) ||
            !runOnServer(connection.get(), "ANALYZE " + name))
            return false;
    }
    return true;
}

// A hit list set up on the sample and shown, as a user has it open before searching.
std::unique_ptr<VXHitList> openHitList(const repo::SampleResult& sample) {
    auto hitList = std::make_unique<VXHitList>();
    hitList->resize(1000, 700);
    hitList->setGroupName(QStringLiteral("Invoices"));
    hitList->setGroupID(sample.groupId);
    hitList->setUserName(QStringLiteral("admin"));
    hitList->setUserPermission(0xFF);
    hitList->setGroupInitString(sample.formPath);
    hitList->setInit(sample.initFilePath);
    hitList->show();
    QCoreApplication::processEvents();
    return hitList;
}

// DoQuery to the first paint, then to the last row in the grid.
void measureHitList(VXHitList& hitList, qsizetype rows, Figures& figures) {
    auto* grid = hitList.findChild<QTableView*>(QStringLiteral("HitList"));
    PaintWatch watch(grid);
    watch.arm();
    hitList.setDoQuery(ResultQuery);
    figures.firstPaint = watch.waitForPaint();
    while (grid->model()->rowCount() < rows)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    figures.fullLoad = seconds(watch.timer());
    figures.rows = grid->model()->rowCount();
}

double measureLazyQt(QSqlDatabase database, const QString& sql) {
    if (!database.open()) {
        std::printf("  Qt driver: %s\n", qPrintable(database.lastError().text()));
        return 0;
    }
    QSqlQueryModel model;
    QTableView view;
    view.resize(1000, 700);
    view.show();
    QCoreApplication::processEvents();
    PaintWatch watch(&view);
    watch.arm();
    model.setQuery(QSqlQuery(sql, database));
    view.setModel(&model);
    const double painted = watch.waitForPaint();
    view.setModel(nullptr);
    model.clear();
    database.close();
    return painted;
}

// The hit list and the lazy Qt view in turns, the best of each: the first run of either pays
// for loading code and warming caches that the other would then find ready. One hit list runs
// the query again, as a user searches again: its connections are open after the first run, as
// the Qt view's and the raw loops' are before their timers start.
void measureBoth(const repo::SampleResult& sample, qsizetype rows, QSqlDatabase database,
                 const QString& sql, Figures& f) {
    f.firstPaint = f.fullLoad = f.lazyQtPaint = 1e9;
    const std::unique_ptr<VXHitList> list = openHitList(sample);
    for (int run = 0; run < Runs; ++run) {
        Figures hitList;
        measureHitList(*list, rows, hitList);
        f.rows = hitList.rows;
        f.firstPaint = std::min(f.firstPaint, hitList.firstPaint);
        f.fullLoad = std::min(f.fullLoad, hitList.fullLoad);
        f.lazyQtPaint = std::min(f.lazyQtPaint, measureLazyQt(database, sql));
    }
    list->Done();
}

void report(const char* engine, const Figures& f, const char* raw) {
    std::printf("  %s: %lld rows\n", engine, qint64(f.rows));
    std::printf("    first paint  hit list %8.3f s   lazy Qt view %8.3f s   ratio %.2f\n",
                f.firstPaint, f.lazyQtPaint, f.firstPaint / f.lazyQtPaint);
    std::printf("    full load    hit list %8.3f s   %-12s %8.3f s   ratio %.2f\n", f.fullLoad, raw,
                f.rawLoop, f.fullLoad / f.rawLoop);
    std::fflush(stdout);
}

Figures measureSqlite(int documents, const QString& root) {
    repo::SampleOptions options;
    options.documents = documents;
    QElapsedTimer built;
    built.start();
    const repo::SampleResult sample =
        repo::createSample(root + QStringLiteral("/sqlite%1").arg(documents), options);
    std::printf("%d documents on SQLite: sample built in %.1f s\n", documents, seconds(built));
    const QByteArray sql = SqliteDialect().rewrite(ResultQuery).toUtf8();
    Figures f;
    qsizetype rows = 0;
    f.rawLoop = bestOf(Runs, [&] { return rawSqlite(sample.databasePath, sql, rows); });
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"),
                                                      QStringLiteral("lazy%1").arg(documents));
    database.setDatabaseName(sample.databasePath);
    measureBoth(sample, rows, database, QString::fromUtf8(sql), f);
    report("SQLite", f, "raw loop");
    return f;
}

std::optional<Figures> measurePostgres(int documents, const QString& root) {
    test::PostgresServer& server = test::PostgresServer::instance();
    if (!server.isAvailable() || !server.isRunning()) {
        std::printf("%d documents on PostgreSQL: no server (%s)\n", documents,
                    qPrintable(server.isAvailable() ? server.failure() : server.skipReason()));
        return std::nullopt;
    }
    repo::SampleOptions options;
    options.documents = std::min(documents, ServerBaseDocuments);
    options.server = server.createDatabase();
    QElapsedTimer built;
    built.start();
    const repo::SampleResult sample =
        repo::createSample(root + QStringLiteral("/postgres%1").arg(documents), options);
    if (documents > options.documents &&
        !multiplyOnServer(options.server, options.documents, documents))
        return std::nullopt;
    std::printf("%d documents on PostgreSQL: sample built in %.1f s (%d written, the rest copied "
                "on the server)\n",
                documents, seconds(built), options.documents);
    const QStringList statements = PostgresDialect().rewriteStatements(ResultQuery);
    const QByteArray sql = statements.value(0).toUtf8();
    Figures f;
    qsizetype rows = 0;
    f.rawLoop = bestOf(Runs, [&] { return rawLibpq(options.server, sql, rows); });
    const ConnectionProperties properties = ConnectionProperties::parse(options.server);
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"),
                                                      QStringLiteral("lazypg%1").arg(documents));
    database.setHostName(properties.value("Host"));
    database.setPort(properties.value("Port").toInt());
    database.setDatabaseName(properties.value("Database"));
    database.setUserName(properties.value("User ID"));
    database.setPassword(properties.value("Password"));
    measureBoth(sample, rows, database, QString::fromUtf8(sql), f);
    report("PostgreSQL", f, "libpq loop");
    return f;
}

} // namespace

int main(int argc, char** argv) {
    drawOffscreenUnlessAsked();
    QApplication app(argc, argv);
    QTemporaryDir root;
    isolateBenchRun(root);
    registerLibraryControls();

    QList<int> sizes;
    for (const QString& argument : app.arguments().mid(1))
        if (argument.toInt() > 0)
            sizes << argument.toInt();
    // Building a large sample on the server takes long: the embedded engine alone is quicker.
    const bool sqliteOnly = app.arguments().contains(QStringLiteral("--sqlite-only"));
    if (sizes.isEmpty())
        sizes = {100000, 1000000};

    Figures sqlite;
    std::optional<Figures> postgres;
    for (const int documents : sizes) {
        sqlite = measureSqlite(documents, root.path());
        if (!sqliteOnly)
            postgres = measurePostgres(documents, root.path());
    }
    // The figures of the largest size.
    double firstPaint = sqlite.firstPaint / sqlite.lazyQtPaint;
    if (postgres)
        firstPaint = std::max(firstPaint, postgres->firstPaint / postgres->lazyQtPaint);
    std::printf(
        "results: first paint %.2fx lazy qt, full load sqlite %.2fx raw, postgres %sx libpq\n",
        firstPaint, sqlite.fullLoad / sqlite.rawLoop,
        postgres ? qPrintable(QString::number(postgres->fullLoad / postgres->rawLoop, 'f', 2))
                 : "n/a");
    return 0;
}
