// Opening and sorting large results in the hit list against the same work on a plain record
// set, in one run. Usage: vxbench_hitlist [--million] [--screenshots DIR]
#include "BenchSession.h"
#include "companions/DefaultCompanions.h"
#include "core/SampleBuilder.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "hitlist/VXHitList.h"
#include "server/ControlFactory.h"
#include "session/GroupConnection.h"
#include "session/Settings.h"
#include "session/UiServices.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QMenu>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>
#include <QToolBar>
#include <cstdio>

using namespace vx;

namespace {

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

void setUp(VXHitList& hitList, const repo::SampleResult& sample) {
    hitList.resize(1000, 700);
    hitList.setGroupName(QStringLiteral("Invoices"));
    hitList.setGroupID(sample.groupId);
    hitList.setUserName(QStringLiteral("admin"));
    hitList.setUserPermission(0xFF);
    hitList.setGroupInitString(sample.formPath);
    hitList.setInit(sample.initFilePath);
}

int columnOf(QTableView* grid, const QString& caption) {
    for (int column = 0; column < grid->model()->columnCount(); ++column)
        if (grid->model()->headerData(column, Qt::Horizontal).toString() == caption)
            return column;
    return -1;
}

void sortFromMenu(VXHitList& hitList, QTableView* grid, const QString& caption) {
    emit grid->horizontalHeader()->sectionClicked(columnOf(grid, caption));
    auto* menu = hitList.findChild<QMenu*>(QStringLiteral("mnuOption"));
    menu->hide();
    menu->actions().at(0)->trigger();
}

void measure(qint32 documents, const QString& root) {
    const QString dir = root + QStringLiteral("/sample%1").arg(documents);
    QElapsedTimer timer;
    timer.start();
    repo::SampleOptions options;
    options.documents = documents;
    const repo::SampleResult sample = repo::createSample(dir, options);
    std::printf("%d documents: sample built in %.1f s\n", documents, seconds(timer));

    // The same rows into a plain record set, then sorted by a text column.
    Connection connection = openGroupConnection(sample.initFilePath);
    timer.restart();
    Recordset plain;
    plain.open(ResultQuery, connection, CursorType::Keyset, LockType::Optimistic,
               CommandType::Text);
    plain.moveFirst();
    const double plainOpen = seconds(timer);
    // DoQuery also applies the remembered sort, by item id unless a column was chosen.
    timer.restart();
    plain.setSort(QStringLiteral("[ITEMID] ASC"));
    const double plainDefaultSort = seconds(timer);
    timer.restart();
    plain.setSort(QStringLiteral("[Customer] ASC"));
    const double plainSort = seconds(timer);
    const qsizetype rows = plain.recordCount();
    plain.close();
    connection.close();

    VXHitList hitList;
    setUp(hitList, sample);
    hitList.show();
    QCoreApplication::processEvents();
    auto* grid = hitList.findChild<QTableView*>(QStringLiteral("HitList"));
    timer.restart();
    hitList.setDoQuery(ResultQuery);
    QCoreApplication::processEvents(); // the first paint of the bound grid
    const double listOpen = seconds(timer);
    const bool current = hitList.currentItemId() != 0 && grid->currentIndex().row() == 0;
    timer.restart();
    sortFromMenu(hitList, grid, QStringLiteral("Customer"));
    QCoreApplication::processEvents();
    const double listSort = seconds(timer);
    // Part of the sort: the record form follows the new first row.
    timer.restart();
    hitList.UpdateForm();
    const double formUpdate = seconds(timer);
    hitList.Done();

    std::printf("  rows %lld, first row current: %s\n", qint64(rows), current ? "yes" : "no");
    std::printf("  DoQuery to bound grid   %8.3f s   plain record set %8.3f s   ratio %.2f\n",
                listOpen, plainOpen, listOpen / plainOpen);
    std::printf("  of which the remembered sort by item id on a plain record set: %.3f s\n",
                plainDefaultSort);
    std::printf("  sort by Customer        %8.3f s   plain record set %8.3f s   ratio %.2f\n",
                listSort, plainSort, listSort / plainSort);
    std::printf("  of which the record form follows the new current row: %.3f s\n", formUpdate);
    std::fflush(stdout);
}

bool save(QWidget& widget, const QString& path) {
    QCoreApplication::processEvents();
    const bool saved = widget.grab().save(path);
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    return saved;
}

void screenshots(const QString& outDir, const QString& root) {
    repo::SampleOptions options;
    const repo::SampleResult sample = repo::createSample(root + QStringLiteral("/shots"), options);
    QDir().mkpath(outDir);
    VXHitList hitList;
    setUp(hitList, sample);
    hitList.show();
    hitList.setDoQuery(ResultQuery);
    save(hitList, outDir + QStringLiteral("/hitlist-results.png"));

    auto* toolbar = hitList.findChild<QToolBar*>(QStringLiteral("tbToolbar1"));
    auto trigger = [&](const char* key) {
        toolbar->findChild<QAction*>(QString::fromLatin1(key))->trigger();
    };
    auto* grid = hitList.findChild<QTableView*>(QStringLiteral("HitList"));
    grid->selectRow(3);
    trigger("Edit");
    save(hitList, outDir + QStringLiteral("/hitlist-edit.png"));
    trigger("Edit");

    // The find and replace panel opened from the column menu sits between toolbar and grid.
    emit grid->horizontalHeader()->sectionClicked(columnOf(grid, QStringLiteral("Customer")));
    auto* menu = hitList.findChild<QMenu*>(QStringLiteral("mnuOption"));
    menu->hide();
    menu->actions().at(2)->trigger();
    save(hitList, outDir + QStringLiteral("/hitlist-find.png"));
    trigger("First"); // any command closes the panel

    grid->selectRow(12); // item 13 has two earlier versions
    trigger("Archive");
    save(hitList, outDir + QStringLiteral("/hitlist-versions.png"));
    hitList.Done();
}

} // namespace

int main(int argc, char** argv) {
    drawOffscreenUnlessAsked();
    QApplication app(argc, argv);
    QTemporaryDir root;
    isolateBenchRun(root);
    registerLibraryControls();

    const QStringList arguments = app.arguments();
    const int shots = int(arguments.indexOf(QStringLiteral("--screenshots")));
    if (shots > 0 && shots + 1 < arguments.size()) {
        screenshots(arguments.at(shots + 1), root.path());
        return 0;
    }
    measure(100'000, root.path());
    if (arguments.contains(QStringLiteral("--million")))
        measure(1'000'000, root.path());
    return 0;
}
