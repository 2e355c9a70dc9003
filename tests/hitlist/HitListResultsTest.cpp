#include "HitListFixture.h"
#include "data/model/RecordsetModel.h"
#include "server/TypeLibrary.h"
#include "session/KeyedTabStrip.h"
#include "session/LibraryState.h"
#include "session/Settings.h"

#include <QHeaderView>
#include <QMenu>

using namespace vx;
using namespace vx::test;

namespace {

const QString Section = QStringLiteral("Invoices");

TEST_F(HitListTest, QueryBindsTheGridAndAnEmptyResultKeepsTheRowsShown) {
    query();
    const qint64 expectedRows = sample.expected().documents - sample.expected().deletedDocuments;
    ASSERT_EQ(grid()->model()->rowCount(), expectedRows);
    EXPECT_TRUE(grid()->isVisible());
    const qint32 first = itemAt(0);
    EXPECT_EQ(raised, QList<qint32>{first}) << "one event for the loaded query";
    EXPECT_EQ(hitList->currentItemId(), first);
    EXPECT_EQ(hitList->selectedItems(), QVariantList{first}) << "the first row is selected";
    EXPECT_EQ(grid()->currentIndex().row(), 0);

    environment.ui().answerMessage(MessageAnswer::Ok);
    query(QStringLiteral("Invoices.InvoiceNo = 'no such invoice'"));
    EXPECT_EQ(promptTexts(environment.ui()),
              QStringList{promptText("Search result", "No results found.",
                                     MessageStyle::OkOnly | MessageStyle::Information)});
    EXPECT_EQ(raised, (QList<qint32>{first, 0}));
    EXPECT_EQ(hitList->currentItemId(), 0);
    EXPECT_EQ(grid()->model()->rowCount(), expectedRows) << "the grid keeps its rows";

    environment.ui().answerMessage(MessageAnswer::Ok);
    hitList->setDoQuery(QStringLiteral("SELECT nothing FROM nowhere"));
    ASSERT_EQ(environment.ui().prompts().size(), 2);
    EXPECT_EQ(environment.ui().lastPrompt()->title, QStringLiteral("Results"));
    EXPECT_EQ(environment.ui().lastPrompt()->style,
              MessageStyle::OkOnly | MessageStyle::Information | MessageStyle::Foreground);
}

TEST_F(HitListTest, ColumnMenuSortsAndRefusesMemoAndListColumns) {
    query();
    chooseColumnMenu(QStringLiteral("Invoice number"), 1);
    EXPECT_EQ(getSetting(Section, QStringLiteral("VXSortOrder")), QStringLiteral("Invoice number"));
    EXPECT_EQ(getSetting(Section, QStringLiteral("VXSortBy")), QStringLiteral("DESC"));
    EXPECT_EQ(grid()->boundRecordset().sort(), QStringLiteral("[Invoice number] DESC"));
    EXPECT_EQ(hitList->currentItemId(), itemAt(0)) << "the new first row is current";
    EXPECT_TRUE(grid()->isVisible());

    environment.ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    chooseColumnMenu(QStringLiteral("Notes"), 0);
    chooseColumnMenu(QStringLiteral("Categories"), 1);
    EXPECT_EQ(promptTexts(environment.ui()),
              (QStringList{promptText("Not Allowed", "Can't sort by Memofield", 0),
                           promptText("Not Allowed", "Can't sort by Listfield", 0)}));
    EXPECT_EQ(getSetting(Section, QStringLiteral("VXSortOrder")), QStringLiteral("Invoice number"));
    EXPECT_EQ(getSetting(Section, QStringLiteral("VXSortBy")), QStringLiteral("DESC"));
    EXPECT_EQ(grid()->boundRecordset().sort(), QStringLiteral("[Invoice number] DESC"));
}

TEST_F(HitListTest, ColumnWidthsDefaultTo1000UnitsAndPersistPerView) {
    query();
    const int defaultPixels = ResultsGrid::unitsToPixels(1000);
    for (int column = 0; column < grid()->model()->columnCount(); ++column)
        EXPECT_EQ(grid()->columnWidth(column), defaultPixels) << "column " << column;

    const int customer = columnOf(QStringLiteral("Customer"));
    grid()->horizontalHeader()->resizeSection(customer, 150);
    EXPECT_EQ(getSetting(Section, QStringLiteral("Customer")).toDouble(),
              ResultsGrid::pixelsToUnits(150));
    query();
    EXPECT_EQ(grid()->columnWidth(customer), 150) << "a new query opens at the stored width";
    EXPECT_EQ(grid()->columnWidth(columnOf(QStringLiteral("Notes"))), defaultPixels);

    // The versions view has widths of its own.
    clickRow(rowOfItem(13));
    click("Archive");
    ASSERT_TRUE(button("Archive")->isChecked());
    const int file = columnOf(QStringLiteral("File Name"));
    EXPECT_EQ(grid()->columnWidth(file), defaultPixels);
    grid()->horizontalHeader()->resizeSection(file, 200);
    EXPECT_EQ(getSetting(Section, QStringLiteral("File NameKTRev")).toDouble(),
              ResultsGrid::pixelsToUnits(200));
    EXPECT_TRUE(getSetting(Section, QStringLiteral("File Name")).isEmpty());
}

TEST_F(HitListTest, InitAddsTheSecurityTabOnceAndFindsTheVersionsTable) {
    EXPECT_TRUE(button("Archive")->isVisible()) << "the sample has KTRevision";
    EXPECT_TRUE(library().revisionTablePresent);
    library().securityTablePresent = true;
    hitList->setInit(sample.initFilePath());
    hitList->setInit(sample.initFilePath());
    auto* tabs = hitList->findChild<KeyedTabStrip*>(QStringLiteral("TabStrip1"));
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->count(), 3);
    EXPECT_TRUE(tabs->hasTab(QStringLiteral("Document Security")));
    EXPECT_EQ(tabs->caption(QStringLiteral("Group")), QStringLiteral("Invoices"));
    EXPECT_FALSE(button("Save")->isVisible());

    environment.ui().answerMessage(MessageAnswer::Ok);
    hitList->setInit(environment.filePath(QStringLiteral("missing.ini")));
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().lastPrompt()->title, QStringLiteral("Initilizing Hitlist"));
    EXPECT_EQ(environment.ui().lastPrompt()->style, MessageStyle::OkOnly | MessageStyle::Critical);

    query();
    click("Edit");
    ASSERT_TRUE(tabs->isVisible());
    hitList->setGroupName(QString());
    EXPECT_FALSE(tabs->isVisible());
    EXPECT_FALSE(hitList->findChild<QWidget*>(QStringLiteral("Group"))->isVisible());
}

TEST_F(HitListTest, PublicMembersAreReachableByNameInOrder) {
    const QMetaObject& meta = VXHitList::staticMetaObject;
    const QString text = typeLibraryText(meta);
    EXPECT_LT(text.indexOf(QStringLiteral("GroupName")), text.indexOf(QStringLiteral("GroupID")));
    EXPECT_LT(text.indexOf(QStringLiteral("PropertyDocuments")),
              text.indexOf(QStringLiteral("ExportToVeltrane")));
    EXPECT_TRUE(text.contains(QStringLiteral("property int CurrentItemID [get]")))
        << text.toStdString();

    // A host connects to the events by their names.
    for (const char* signal :
         {"RecordAuditTrail(QString&,QVariantList&,QString&)",
          "LocateDocumentFromID(qint32&,QString&,QString&)", "CurrentItemID(qint32&)"})
        EXPECT_GE(meta.indexOfSignal(signal), 0) << signal;
    EXPECT_TRUE(hitList->setProperty("DoQuery", sampleResultQuery()));
    EXPECT_EQ(hitList->property("CurrentItemID").toInt(), itemAt(0));
}

} // namespace
