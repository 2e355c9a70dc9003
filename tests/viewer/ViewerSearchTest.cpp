#include "ExportVolume.h"
#include "HitListEvents.h"
#include "HitPrinter.h"
#include "HitSearch.h"
#include "SearchPane.h"
#include "ViewerFixture.h"
#include "ViewerWindow.h"

#include <QAbstractItemView>
#include <QTextStream>

using namespace vx;
using namespace vx::test;
using namespace vx::viewer;

namespace {

struct PrintResult {
    int code = -1;
    QStringList lines;
    QString errors;
};

class ViewerSearchTest : public ViewerFixture, public ::testing::WithParamInterface<bool> {
protected:
    Medium medium() const { return GetParam() ? Medium::Cd : Medium::Folder; }

    PrintResult printHits(const QStringList& arguments) {
        PrintResult result;
        QString out;
        QTextStream outStream(&out);
        QTextStream errStream(&result.errors);
        result.code = vx::viewer::printHits(arguments, stateRoot, outStream, errStream);
        errStream.flush();
        result.lines = out.split('\n', Qt::SkipEmptyParts);
        return result;
    }
};

TEST_P(ViewerSearchTest, SearchesByFieldKeywordAndBothAsTheDatabaseAnswers) {
    const QString root = exportSample(medium());
    const QStringList volumes = volumesOf(root);
    ASSERT_GE(volumes.size(), medium() == Medium::Cd ? 2 : 1) << volumes.join(",").toStdString();
    const QString volume = root + "/" + volumes.first();

    // A customer and a keyword that exported documents carry.
    const QStringList pair = sqliteRows(
        volume, "SELECT g.Customer || '|' || k.keyword FROM Invoices g JOIN keywords k ON "
                "k.itemid = g.itemid ORDER BY g.itemid LIMIT 1");
    ASSERT_EQ(pair.size(), 1);
    const QString customer = pair.first().section('|', 0, 0);
    const QString keyword = pair.first().section('|', 1);

    const QString live = "FROM Invoices g JOIN KTItem i ON i.itemid = g.itemid ";
    const QString byCustomer = "lower(g.Customer) = lower('" + customer + "')";
    const QString byKeyword =
        "g.itemid IN (SELECT itemid FROM keywords WHERE keyword = '" + keyword + "')";
    struct Case {
        QStringList arguments;
        QString condition;
    } cases[] = {
        {{"Customer=" + customer}, byCustomer},
        {{"--keyword", keyword}, byKeyword},
        {{"Customer=" + customer, "--keyword=" + keyword}, byCustomer + " AND " + byKeyword},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const QStringList expected =
            sqliteRows(volume, "SELECT DISTINCT g.itemid " + live + "WHERE i.deleted = 0 AND " +
                                   c.condition + " ORDER BY g.itemid");
        ASSERT_FALSE(expected.isEmpty());
        // From the export root and from a volume folder alike.
        for (const QString& folder : {root, volume}) {
            const PrintResult result = printHits(QStringList{folder} + c.arguments);
            EXPECT_EQ(result.code, 0) << result.errors.toStdString();
            EXPECT_EQ(result.lines, expected);
        }
    }
    // The field search finds more than the one with the keyword too, so both criteria count.
    EXPECT_NE(printHits({root, "Customer=" + customer}).lines,
              printHits({root, "Customer=" + customer, "--keyword", keyword}).lines);
}

TEST_P(ViewerSearchTest, TheWindowShowsTheSameHitsWithoutEditingCommands) {
    const QString root = exportSample(medium());
    const QString volume = root + "/" + volumesOf(root).first();
    const QString keyword =
        sqliteRows(volume, "SELECT keyword FROM keywords k JOIN Invoices g ON g.itemid = k.itemid "
                           "ORDER BY k.itemid LIMIT 1")
            .value(0);
    const QStringList expected = printHits({root, "--keyword", keyword}).lines;
    ASSERT_FALSE(expected.isEmpty());

    ViewerWindow window(stateRoot);
    ASSERT_TRUE(window.openExport(root));
    SearchCriteria criteria;
    criteria.keywords << keyword;
    ASSERT_TRUE(window.search(criteria));
    auto* grid = window.hitListControl()->findChild<QAbstractItemView*>("HitList");
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->model()->rowCount(), expected.size());
    EXPECT_EQ(QString::number(window.currentItemId()), expected.first());

    for (const char* command :
         {"Edit", "Archive", "Export", "Update", "Move", "Delete", "Veltrane"}) {
        auto* button = window.hitListControl()->findChild<QAction*>(command);
        ASSERT_NE(button, nullptr) << command;
        EXPECT_FALSE(button->isEnabled()) << command;
    }
}

TEST_P(ViewerSearchTest, FavouritesAreKeptPerExport) {
    const QString first = exportSample(medium());
    // A second export of other documents, in a folder of its own.
    QTemporaryDir otherDestination;
    destination = otherDestination.path();
    const QString second = exportSample(Medium::Folder, liveItems().mid(0, 2));

    {
        ViewerWindow window(stateRoot);
        ASSERT_TRUE(window.openExport(first));
        QString name = "Mine", query = "SELECT * FROM Invoices";
        window.searchPane()->hitListEvents()->SaveQuery(name, query);
        window.closeExport();
    }
    ViewerWindow window(stateRoot);
    auto favourites = [&] {
        return window.favouritesControl()->findChild<QAbstractItemView*>()->model()->rowCount();
    };
    ASSERT_TRUE(window.openExport(second));
    EXPECT_EQ(favourites(), 0);
    ASSERT_TRUE(window.openExport(first));
    EXPECT_EQ(favourites(), 1);
}

TEST_P(ViewerSearchTest, BadCriteriaSayWhatIsWrong) {
    const QString root = exportSample(medium());
    struct Case {
        QStringList arguments;
        int code;
        QString message;
    } cases[] = {
        {{root, "Nonsense=1"}, 2, "has no field \"Nonsense\"; its fields are: InvoiceNo"},
        {{root}, 2, "give at least one COLUMN=VALUE"},
        {{root, "--keyword"}, 2, "--keyword needs a word"},
        {{root, "justtext"}, 2, "is not a criterion"},
        {{}, 2, "needs the export's folder"},
        {{destination, "Customer=x"}, 1, "is not a portable export"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const PrintResult result = printHits(c.arguments);
        EXPECT_EQ(result.code, c.code);
        EXPECT_TRUE(result.errors.contains(c.message)) << result.errors.toStdString();
        EXPECT_TRUE(result.lines.isEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Media, ViewerSearchTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Cd" : "Folder"; });

} // namespace
