// A large result in the hit list, in one run per engine: from DoQuery to the first painted grid
// against a Qt view over a lazily fetching QSqlQueryModel on the same query, and from DoQuery to
// the whole result in the grid against the engine's own loop over every value.
// Usage: vxbench_results [--sqlite-only] [documents ...]   (default: 100000 1000000)
#include "companions/DefaultCompanions.h"
#include "core/SampleBuilder.h"
#include "data/ConnectionProperties.h"
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
#include <cstdio>
#include <functional>
#include <libpq-fe.h>
#include <memory>
#include <sqlite3.h>

using namespace vx;

namespace {

class SilentUi : public UiServices {
public:
    MessageAnswer messageBox(const QString& text, int style, const QString& title) override {
        std::printf("  [message] %s: %s\n", qPrintable(title), qPrintable(text));
        return MessageStyle::buttonsOf(style) == MessageStyle::YesNo ? MessageAnswer::No
                                                                     : MessageAnswer::Ok;
    }
    std::optional<QString> inputBox(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    QString browseForFolder(QWidget*, const QString&) override { return {}; }
    void setBusyCursor(bool) override {}
    void processEvents() override { QCoreApplication::processEvents(); }
    void sleep(int) override {}
    bool shellExecute(const QString&, const QString&) override { return false; }
};

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
constexpr int Runs = 3;

// Keeps the raw loops' reads from being optimised away.
volatile std::size_t sink = 0;

double bestOf(int runs, const std::function<double()>& run) {
    double best = 1e9;
    for (int i = 0; i < runs; ++i)
        best = std::min(best, run());
    return best;
}

// The engine's own loop: the statement stepped to its end, every value read as text.
double rawSqlite(const QString& path, const QByteArray& sql, qsizetype& rows) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr);
    QElapsedTimer timer;
    timer.start();
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &statement, nullptr);
    const int columns = sqlite3_column_count(statement);
    qsizetype count = 0;
    std::size_t bytes = 0;
    for (; sqlite3_step(statement) == SQLITE_ROW; ++count) {
        for (int c = 0; c < columns; ++c) {
            sqlite3_column_text(statement, c);
            bytes += std::size_t(sqlite3_column_bytes(statement, c));
        }
    }
    sink = bytes;
    sqlite3_finalize(statement);
    const double elapsed = seconds(timer);
    sqlite3_close_v2(db);
    rows = count;
    return elapsed;
}

// libpq's own loop: the query run, then every value read.
double rawLibpq(const QString& initString, const QByteArray& sql, qsizetype& rows) {
    const ConnectionProperties properties = ConnectionProperties::parse(initString);
    const QByteArray conninfo =
        QStringLiteral("host=%1 port=%2 dbname=%3 user=%4 password=%5")
            .arg(properties.value("Host"), properties.value("Port"), properties.value("Database"),
                 properties.value("User ID"), properties.value("Password"))
            .toUtf8();
    PGconn* connection = PQconnectdb(conninfo.constData());
    QElapsedTimer timer;
    timer.start();
    PGresult* result = PQexec(connection, sql.constData());
    const int count = PQntuples(result);
    const int columns = PQnfields(result);
    std::size_t bytes = 0;
    for (int row = 0; row < count; ++row)
        for (int c = 0; c < columns; ++c)
            bytes +=
                std::size_t(PQgetlength(result, row, c)) + (PQgetvalue(result, row, c)[0] != 0);
    sink = bytes;
    PQclear(result);
    const double elapsed = seconds(timer);
    PQfinish(connection);
    rows = count;
    return elapsed;
}

// DoQuery to the first paint, then to the last row in the grid.
void measureHitList(const repo::SampleResult& sample, qsizetype rows, Figures& figures) {
    VXHitList hitList;
    hitList.resize(1000, 700);
    hitList.setGroupName(QStringLiteral("Invoices"));
    hitList.setGroupID(sample.groupId);
    hitList.setUserName(QStringLiteral("admin"));
    hitList.setUserPermission(0xFF);
    hitList.setGroupInitString(sample.formPath);
    hitList.setInit(sample.initFilePath);
    hitList.show();
    QCoreApplication::processEvents();
    auto* grid = hitList.findChild<QTableView*>(QStringLiteral("HitList"));
    PaintWatch watch(grid);
    watch.arm();
    hitList.setDoQuery(ResultQuery);
    figures.firstPaint = watch.waitForPaint();
    while (grid->model()->rowCount() < rows)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    figures.fullLoad = seconds(watch.timer());
    figures.rows = grid->model()->rowCount();
    hitList.Done();
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
// for loading code and warming caches that the other would then find ready.
void measureBoth(const repo::SampleResult& sample, qsizetype rows, QSqlDatabase database,
                 const QString& sql, Figures& f) {
    f.firstPaint = f.fullLoad = f.lazyQtPaint = 1e9;
    for (int run = 0; run < Runs; ++run) {
        Figures hitList;
        measureHitList(sample, rows, hitList);
        f.rows = hitList.rows;
        f.firstPaint = std::min(f.firstPaint, hitList.firstPaint);
        f.fullLoad = std::min(f.fullLoad, hitList.fullLoad);
        f.lazyQtPaint = std::min(f.lazyQtPaint, measureLazyQt(database, sql));
    }
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
    options.documents = documents;
    options.server = server.createDatabase();
    QElapsedTimer built;
    built.start();
    const repo::SampleResult sample =
        repo::createSample(root + QStringLiteral("/postgres%1").arg(documents), options);
    std::printf("%d documents on PostgreSQL: sample built in %.1f s\n", documents, seconds(built));
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
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir root;
    setSettingsDirectory(root.filePath(QStringLiteral("settings")));
    installUiServices(std::make_unique<SilentUi>());
    registerDefaultCompanions();
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
