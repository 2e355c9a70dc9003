// How the controls' repository work grows with the repository: the same user actions on
// samples of different sizes, each timed, and the ratio of the largest sample's time to the
// smallest's. An action that asks for a few rows should not grow with the repository.
// Usage: vxbench_scale [--without-indexes] DIR [DIR ...]
//          samples made by `vxrepo create-sample DIR --documents N`, smallest first; each is
//          used as it is, so a copy of a sample made by an older tool shows its first open
//        vxbench_scale --postgres [--without-indexes] N [N ...]
//          samples of N documents on the tests' throw-away PostgreSQL server (2,000 written,
//          the rest copied on the server)
// --without-indexes drops the group table's search indexes after the first open, to show the
// figures of a repository without them.
#include "BenchSession.h"
#include "companions/DefaultCompanions.h"
#include "core/CommandLine.h"
#include "core/SampleBuilder.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "hitlist/VXHitList.h"
#include "index/VXIndex.h"
#include "pickers/VXDictionary.h"
#include "pickers/VXDocSec.h"
#include "pickers/VXKeywords.h"
#include "query/VXFavourites.h"
#include "query/VXQuery.h"
#include "server/ControlFactory.h"
#include "session/GroupConnection.h"
#include "session/Settings.h"
#include "session/UiServices.h"
#include "support/PostgresServer.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <vector>

using namespace vx;

namespace {

// The hit list's columns, as the query control builds them, with the criteria given.
QString resultQuery(const QString& criteria) {
    return QStringLiteral(
               "SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS IndexDate, "
               "Invoices.InvoiceNo AS [Invoice number], Invoices.Customer AS [Customer], "
               "Invoices.Status AS [Status], Invoices.Amount AS [Amount], "
               "Invoices.InvoiceDate AS [Invoice date], Invoices.Paid AS [Paid], "
               "Invoices.Categories AS [Categories], Invoices.Notes AS [Notes] "
               "FROM ktitem, Invoices WHERE ktitem.itemid = Invoices.itemid AND "
               "ktitem.deleted = 0 AND ") +
           criteria + QStringLiteral(" ORDER BY ktitem.itemid");
}

bool withoutIndexes = false;

struct Sample {
    QString dir;
    QString initFile() const { return dir + QStringLiteral("/Invoices.ini"); }
    QString form() const { return dir + QStringLiteral("/config/Invoices.xml"); }
    QString queryForm() const { return dir + QStringLiteral("/config/Invoices.xqr"); }
};

// Operation name -> seconds per sample, in the order first measured.
std::vector<QString> order;
std::map<QString, std::vector<double>> figures;

void record(const QString& name, double seconds, const QString& note = {}) {
    if (!figures.count(name))
        order.push_back(name);
    figures[name].push_back(seconds);
    std::printf("  %-46s %8.4f s %s\n", qPrintable(name), seconds, qPrintable(note));
    std::fflush(stdout);
}

double timed(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    QCoreApplication::processEvents();
    return double(timer.nsecsElapsed()) / 1e9;
}

int gridRows(VXHitList& hitList) {
    auto* grid = hitList.findChild<QTableView*>(QStringLiteral("HitList"));
    return grid && grid->model() ? grid->model()->rowCount() : -1;
}

void measure(const Sample& sample) {
    std::printf("%s\n", qPrintable(sample.dir));
    VXHitList hitList;
    hitList.resize(1000, 700);
    hitList.setGroupName(QStringLiteral("Invoices"));
    hitList.setGroupID(1);
    hitList.setUserName(QStringLiteral("admin"));
    hitList.setUserPermission(0xFF);
    hitList.setGroupInitString(sample.form());
    hitList.show();
    if (withoutIndexes) {
        Connection connection = openGroupConnection(sample.initFile()); // makes them, once
        for (const QString& name : connection.indexNames())
            if (name.startsWith(QStringLiteral("ix_Invoices_"), Qt::CaseInsensitive))
                connection.execute(QStringLiteral("DROP INDEX [%1]").arg(name));
    }
    // The first open of a repository in a process brings its search indexes up to date.
    record(QStringLiteral("hit list: first open of the repository"),
           timed([&] { hitList.setInit(sample.initFile()); }));
    record(QStringLiteral("hit list: open again"),
           timed([&] { hitList.setInit(sample.initFile()); }));

    const std::pair<const char*, QString> queries[] = {
        {"query: invoice number (1 hit)",
         QStringLiteral("LOWER(Invoices.InvoiceNo) = 'inv-0000123'")},
        {"query: amount (~100 hits)", QStringLiteral("Invoices.Amount = 1234")},
        {"query: invoice date, one day", QStringLiteral("Invoices.InvoiceDate >= #06/25/2023# AND "
                                                        "Invoices.InvoiceDate < #06/26/2023#")},
        {"query: amount range (~1000 hits)", QStringLiteral("Invoices.Amount >= 1000 AND "
                                                            "Invoices.Amount <= 1010")},
    };
    for (const auto& [name, criteria] : queries) {
        const double seconds = timed([&] { hitList.setDoQuery(resultQuery(criteria)); });
        record(QString::fromLatin1(name), seconds,
               QStringLiteral("(%1 rows)").arg(gridRows(hitList)));
    }
    record(QStringLiteral("hit list: record form of the current row"),
           timed([&] { hitList.UpdateForm(); }));
    hitList.Done();

    {
        VXKeywords keywords;
        record(QStringLiteral("keyword picker: open and fill"),
               timed([&] { keywords.setInit(sample.initFile()); }));
        keywords.Done();
        VXDocSec users;
        record(QStringLiteral("user picker: open and fill"),
               timed([&] { users.setInit(sample.initFile()); }));
        users.Done();
        VXDictionary dictionary;
        record(QStringLiteral("dictionary editor: open and fill"),
               timed([&] { dictionary.setInit(sample.initFile()); }));
        dictionary.Done();
        VXFavourites favourites;
        QString group = QStringLiteral("Invoices");
        record(QStringLiteral("favourites: open"), timed([&] { favourites.Init(group); }));
        favourites.Done();
    }
    {
        std::unique_ptr<QWidget> control(ControlFactory::create(QStringLiteral("VXUILib.VXQuery")));
        auto* query = qobject_cast<VXQuery*>(control.get());
        query->setMethodInitString(sample.initFile());
        QString form = sample.queryForm();
        record(QStringLiteral("query control: open with its form"),
               timed([&] { query->Init(form); }));
    }
    {
        std::unique_ptr<QWidget> control(ControlFactory::create(QStringLiteral("VXUILib.VXIndex")));
        auto* index = qobject_cast<VXIndex*>(control.get());
        index->setGroupName(QStringLiteral("Invoices"));
        index->setGroupId(1);
        index->setUserName(QStringLiteral("alice"));
        index->setCurrentLibrary(QStringLiteral("Main"));
        index->setUserPermission(1);
        record(QStringLiteral("index control: open with its form"), timed([&] {
                   index->setInit(sample.initFile());
                   index->setGroupInitString(sample.form());
               }));
        index->Done();
    }

    // The statements the hit list's operations send for a selection, as they send them.
    Connection connection = openGroupConnection(sample.initFile());
    const QString within = QStringLiteral(
        " AND itemid IN (SELECT Invoices.itemid FROM KTITEM, Invoices WHERE ktitem.itemid = "
        "Invoices.itemid AND ktitem.deleted = 0 AND Invoices.Amount = 1234)");
    const auto sql = [&](const char* name, const QString& text) {
        record(QString::fromLatin1(name), timed([&] {
                   Recordset rows;
                   rows.open(text, connection);
                   rows.close();
               }));
    };
    sql("pick list: distinct values of a column",
        QStringLiteral("Select distinct Status from Invoices"));
    sql("find: rows of the hit list with a value",
        QStringLiteral("SELECT * FROM Invoices WHERE Invoices.Customer='Acme Tools'") + within);
    record(QStringLiteral("replace all in the hit list"), timed([&] {
               Transaction transaction(connection);
               connection.execute(QStringLiteral("UPDATE Invoices SET Status='Open' WHERE "
                                                 "Invoices.Status='Open'") +
                                  within);
               // Left as it was: the rows are the same either way.
               transaction.commit();
           }));
    sql("record form: keywords of one document",
        QStringLiteral("select * from keywords where itemid =  123"));
    sql("versions of one document",
        QStringLiteral("select [itemid] AS [Item ID], [Version], [fname] AS [File Name] from "
                       "KTRevision where itemid=  13"));
    sql("operations: rows of a small selection",
        QStringLiteral("select * from ktfile where itemid in ( 5, 77, 900, 4000)"));
    connection.close();

    QString out;
    QString err;
    QTextStream outStream(&out);
    QTextStream errStream(&err);
    const QString catalog = sample.dir + QStringLiteral("/bench-catalog.ini");
    static int round = 0;
    ++round;
    const auto tool = [&](const char* name, const QStringList& arguments) {
        const double seconds = timed([&] {
            if (repo::runRepositoryTool(arguments, outStream, errStream, catalog) != 0)
                std::printf("  [vxrepo] %s\n", qPrintable(err));
        });
        record(QString::fromLatin1(name), seconds);
    };
    tool("vxrepo add-user",
         {QStringLiteral("add-user"), sample.dir, QStringLiteral("bench%1").arg(round)});
    tool("vxrepo add-word",
         {QStringLiteral("add-word"), sample.dir, QStringLiteral("benchword%1").arg(round)});
    tool("vxrepo add-path", {QStringLiteral("add-path"), sample.dir,
                             sample.dir + QStringLiteral("/bench-path-%1").arg(round)});
}

// Copies the item and group rows of the first `base` documents, ids shifted by multiples of
// `base`, until there are `documents`: one INSERT ... SELECT per table, on the server.
void multiply(const Sample& sample, int base, int documents) {
    Connection connection = openGroupConnection(sample.initFile());
    const int copies = (documents + base - 1) / base - 1;
    for (const char* table : {"KTItem", "Invoices"}) {
        Recordset shape;
        shape.open(QStringLiteral("SELECT * FROM [%1] WHERE 1 = 0").arg(QLatin1String(table)),
                   connection);
        QStringList names;
        QStringList values;
        for (int i = 0; i < shape.fieldCount(); ++i) {
            const QString column = shape.field(i).name();
            names << u'[' + column + u']';
            values << (column.compare(QStringLiteral("itemid"), Qt::CaseInsensitive) == 0
                           ? QStringLiteral("t.[%1] + g * %2").arg(column).arg(base)
                           : QStringLiteral("t.[%1]").arg(column));
        }
        shape.close();
        connection.execute(QStringLiteral("INSERT INTO [%1] (%2) SELECT %3 FROM [%1] t CROSS JOIN "
                                          "generate_series(1, %4) g WHERE t.[itemid] + g * %5 "
                                          "<= %6")
                               .arg(QLatin1String(table), names.join(QStringLiteral(", ")),
                                    values.join(QStringLiteral(", ")))
                               .arg(copies)
                               .arg(base)
                               .arg(documents));
        connection.execute(QStringLiteral("ANALYZE [%1]").arg(QLatin1String(table)));
    }
}

std::optional<Sample> serverSample(int documents, const QString& root) {
    test::PostgresServer& server = test::PostgresServer::instance();
    if (!server.isAvailable() || !server.isRunning()) {
        std::printf("no PostgreSQL server: %s\n",
                    qPrintable(server.isAvailable() ? server.failure() : server.skipReason()));
        return std::nullopt;
    }
    constexpr int Written = 2000;
    repo::SampleOptions options;
    options.documents = std::min(documents, Written);
    options.server = server.createDatabase();
    QElapsedTimer timer;
    timer.start();
    const repo::SampleResult made =
        repo::createSample(root + QStringLiteral("/postgres%1").arg(documents), options);
    const Sample sample{made.dir};
    if (documents > options.documents)
        multiply(sample, options.documents, documents);
    std::printf("%d documents on PostgreSQL: built in %.1f s\n", documents,
                double(timer.nsecsElapsed()) / 1e9);
    return sample;
}

} // namespace

int main(int argc, char** argv) {
    drawOffscreenUnlessAsked();
    QApplication app(argc, argv);
    QTemporaryDir root;
    isolateBenchRun(root);
    qputenv("VXUILIB_SYSTEM_DIR", root.filePath(QStringLiteral("system")).toUtf8());
    registerLibraryControls();

    QStringList arguments = app.arguments().mid(1);
    const bool postgres = arguments.removeAll(QStringLiteral("--postgres")) > 0;
    withoutIndexes = arguments.removeAll(QStringLiteral("--without-indexes")) > 0;
    if (arguments.isEmpty()) {
        std::fprintf(stderr, "usage: vxbench_scale [--without-indexes] DIR [DIR ...]\n"
                             "       vxbench_scale --postgres [--without-indexes] N [N ...]\n");
        return 2;
    }
    for (const QString& argument : arguments) {
        if (!postgres) {
            measure({QDir(argument).absolutePath()});
        } else if (const auto sample = serverSample(argument.toInt(), root.path())) {
            measure(*sample);
        }
    }

    if (arguments.size() > 1) {
        std::printf("\n%-46s %10s %10s %8s\n", "operation", "smallest", "largest", "ratio");
        for (const QString& name : order) {
            const std::vector<double>& s = figures[name];
            std::printf("%-46s %10.4f %10.4f %8.1f\n", qPrintable(name), s.front(), s.back(),
                        s.back() / std::max(s.front(), 1e-6));
        }
    }
    return 0;
}
