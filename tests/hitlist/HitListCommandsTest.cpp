#include "HitListFixture.h"
#include "data/Connection.h"
#include "session/GroupConnection.h"
#include "session/KeyedTabStrip.h"
#include "session/companions/VXDynaForm.h"

#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

using namespace vx;
using namespace vx::test;

namespace {

TEST_F(HitListTest, EditNeedsExactlyOneDocumentAndTheFormKeysLeaveOrSave) {
    query();
    auto* selection = grid()->selectionModel();
    selection->select(grid()->model()->index(3, 0),
                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    environment.ui().answerMessage(MessageAnswer::Ok);
    click("Edit");
    EXPECT_EQ(promptTexts(environment.ui()),
              QStringList{promptText("Edit Document",
                                     "Multiple items selected.\rPlease select one item only.",
                                     MessageStyle::OkOnly | MessageStyle::Exclamation)});
    EXPECT_FALSE(button("Edit")->isChecked());
    EXPECT_TRUE(grid()->isVisible());

    clickRow(2);
    QTest::keyClick(grid(), Qt::Key_F2);
    EXPECT_TRUE(button("Edit")->isChecked());
    auto* form = hitList->findChild<VXDynaForm*>(QStringLiteral("Group"));
    auto* tabs = hitList->findChild<KeyedTabStrip*>(QStringLiteral("TabStrip1"));
    ASSERT_NE(form, nullptr);
    EXPECT_FALSE(grid()->isVisible());
    EXPECT_TRUE(tabs->isVisible());
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(tabs->selectedKey(), QStringLiteral("Group"));
    EXPECT_TRUE(button("Save")->isVisible());
    EXPECT_FALSE(button("Archive")->isVisible());
    EXPECT_FALSE(button("Delete")->isVisible());
    EXPECT_EQ(button("Edit")->toolTip(), QStringLiteral("Return to Search Results"));

    // The tabs switch pages in the same place.
    auto* keywords = hitList->findChild<QWidget*>(QStringLiteral("kss3"));
    ASSERT_NE(keywords, nullptr);
    for (const auto& [key, shown] : {std::pair<QString, QWidget*>{"Keywords", keywords},
                                     std::pair<QString, QWidget*>{"Group", form}}) {
        tabs->select(key);
        emit tabs->clicked();
        EXPECT_TRUE(shown->isVisible()) << key.toStdString();
        EXPECT_NE(keywords->isVisible(), form->isVisible()) << key.toStdString();
    }
    EXPECT_TRUE(keywords->geometry().intersects(tabs->geometry()));

    // Enter asks before saving; No keeps the form.
    environment.ui().answerMessage(MessageAnswer::No);
    short enter = 13;
    short shift = 0;
    emit form->KeyDown(enter, shift);
    EXPECT_EQ(promptTexts(environment.ui()).value(1),
              promptText("Confirm Commit", "Save Changes to the Record?", MessageStyle::YesNo));
    EXPECT_TRUE(button("Edit")->isChecked());

    short escape = 27;
    emit form->KeyDown(escape, shift);
    EXPECT_FALSE(button("Edit")->isChecked());
    EXPECT_TRUE(grid()->isVisible());
    EXPECT_FALSE(tabs->isVisible());
    EXPECT_FALSE(button("Save")->isVisible());
    EXPECT_TRUE(button("Archive")->isVisible());
    EXPECT_EQ(button("Edit")->toolTip(), QStringLiteral("Display Form for Editing"));
}

TEST_F(HitListTest, PermissionsOnlyEnableAndEditNeedsMask8) {
    VXHitList fresh;
    auto* freshToolbar = fresh.findChild<QToolBar*>(QStringLiteral("tbToolbar1"));
    auto state = [&](const char* key) {
        return freshToolbar->findChild<QAction*>(QString::fromLatin1(key))->isEnabled();
    };
    for (const char* key : {"Move", "Edit", "Export", "Veltrane", "Delete", "Update", "Archive"})
        EXPECT_FALSE(state(key)) << key;
    for (const char* key : {"First", "Print", "SaveQuery", "Properties"})
        EXPECT_TRUE(state(key)) << key;

    fresh.setUserPermission(32 | 64 | 128);
    for (const char* key : {"Move", "Export", "Veltrane", "Delete"})
        EXPECT_TRUE(state(key)) << key;
    for (const char* key : {"Edit", "Update", "Archive"})
        EXPECT_FALSE(state(key)) << key;
    fresh.setUserPermission(0);
    EXPECT_TRUE(state("Move")) << "permissions never disable";
    fresh.setUserPermission(8);
    for (const char* key : {"Edit", "Update"})
        EXPECT_TRUE(state(key)) << key;
    EXPECT_TRUE(button("Archive")->isEnabled()) << "mask 8 enables Archive once Init shows it";

    // The keys are the Edit button: without mask 8 they do nothing.
    VXHitList limited;
    limited.setGroupName(SampleRepository::GroupName);
    limited.setUserPermission(32 | 64 | 128);
    limited.setGroupInitString(sample.formDefinitionPath());
    limited.setInit(sample.initFilePath());
    limited.setDoQuery(sampleResultQuery());
    auto* limitedGrid = limited.findChild<ResultsGrid*>(QStringLiteral("HitList"));
    QTest::keyClick(limitedGrid, Qt::Key_F2);
    QTest::keyClick(limitedGrid, Qt::Key_E, Qt::ControlModifier);
    EXPECT_FALSE(limited.findChild<QAction*>(QStringLiteral("Edit"))->isChecked());
    auto* archive = limited.findChild<QAction*>(QStringLiteral("Archive"));
    EXPECT_TRUE(archive->isVisible());
    EXPECT_FALSE(archive->isEnabled());
    EXPECT_FALSE(limited.findChild<KeyedTabStrip*>(QStringLiteral("TabStrip1"))->isVisible());
    limited.Done();
}

TEST_F(HitListTest, VersionsViewShowsEarlierVersionsAndAlwaysSortsByItemId) {
    query();
    // Item 1 has no earlier versions: the results view stays.
    clickRow(rowOfItem(1));
    click("Archive");
    EXPECT_FALSE(button("Archive")->isChecked());
    EXPECT_GE(columnOf(QStringLiteral("Customer")), 0);

    clickRow(rowOfItem(13));
    click("Archive");
    ASSERT_TRUE(button("Archive")->isChecked());
    EXPECT_EQ(grid()->model()->rowCount(), 2);
    EXPECT_GE(columnOf(QStringLiteral("Volume Name")), 0);
    EXPECT_FALSE(button("Edit")->isVisible());
    EXPECT_FALSE(button("Print")->isVisible());
    EXPECT_EQ(button("Archive")->toolTip(), QStringLiteral("Return to Search Results"));

    // No menu in this view, and both directions sort by item id.
    auto* menu = hitList->findChild<QMenu*>(QStringLiteral("mnuOption"));
    emit grid()->horizontalHeader()->sectionClicked(columnOf(QStringLiteral("Version")));
    EXPECT_FALSE(menu->isVisible());
    menu->actions().at(1)->trigger();
    EXPECT_EQ(grid()->boundRecordset().sort(), QStringLiteral("[Item ID] ASC"));
    menu->actions().at(0)->trigger();
    EXPECT_EQ(grid()->boundRecordset().sort(), QStringLiteral("[Item ID] ASC"));

    // A new query returns to the results first.
    query();
    EXPECT_FALSE(button("Archive")->isChecked());
    EXPECT_EQ(button("Archive")->toolTip(), QStringLiteral("View Previous Document Versions"));
    EXPECT_GE(columnOf(QStringLiteral("Customer")), 0);
    EXPECT_TRUE(button("Print")->isVisible());
}

TEST_F(HitListTest, SaveRequeriesAndKeepsTheSameDocumentCurrent) {
    query();
    const int row = 6;
    const qint32 item = itemAt(row);
    clickRow(row);
    click("Edit");
    ASSERT_TRUE(button("Save")->isVisible());

    // Another user marks documents deleted meanwhile: the requery drops them.
    const auto markDeleted = [this](const QString& ids) {
        openGroupConnection(sample.initFilePath())
            .execute("UPDATE ktitem SET deleted = -1 WHERE itemid IN (" + ids + ")");
    };
    markDeleted(QStringLiteral("%1, %2").arg(itemAt(0)).arg(itemAt(1)));
    const int rowsBefore = grid()->model()->rowCount();
    QList<QVariantList> audited;
    QObject::connect(hitList.get(), &VXHitList::RecordAuditTrail, hitList.get(),
                     [&](QString& action, QVariantList& ids, QString&) {
                         if (action == QLatin1String("Editing"))
                             audited << ids;
                     });
    raised.clear();
    click("Save");
    EXPECT_EQ(audited, QList<QVariantList>{QVariantList{item}}) << "the record form saved";
    EXPECT_EQ(grid()->model()->rowCount(), rowsBefore - 2);
    EXPECT_EQ(hitList->currentItemId(), item);
    EXPECT_EQ(raised, QList<qint32>{item});
    EXPECT_EQ(itemAt(grid()->currentIndex().row()), item);
    EXPECT_EQ(grid()->boundRecordset().value(QStringLiteral("itemid")).toInt(), item);

    // A saved document that left the result: back to the results view.
    ASSERT_TRUE(button("Save")->isVisible()) << "still editing";
    markDeleted(QString::number(item));
    raised.clear();
    click("Save");
    EXPECT_EQ(rowOfItem(item), -1);
    EXPECT_EQ(raised, QList<qint32>{item}) << "the host hears of the remembered document";
    EXPECT_EQ(hitList->currentItemId(), item);
    EXPECT_TRUE(grid()->isVisible());
    EXPECT_FALSE(button("Edit")->isChecked());
    EXPECT_FALSE(button("Save")->isVisible());
    EXPECT_TRUE(button("Delete")->isVisible());
}

TEST_F(HitListTest, SaveQueryAsksForANameAndRaisesTheEventOnlyWithOne) {
    query(QStringLiteral("Invoices.Paid = -1"));
    QStringList saved;
    QObject::connect(hitList.get(), &VXHitList::SaveQuery, hitList.get(),
                     [&](QString& name, QString& text) { saved << name << text; });
    environment.ui().cancelInput();
    click("SaveQuery");
    environment.ui().answerInput(QString());
    click("SaveQuery");
    EXPECT_TRUE(saved.isEmpty());
    environment.ui().answerInput(QStringLiteral("Paid ones"));
    click("SaveQuery");
    EXPECT_EQ(saved, (QStringList{QStringLiteral("Paid ones"),
                                  sampleResultQuery(QStringLiteral("Invoices.Paid = -1"))}));
    EXPECT_EQ(environment.ui().lastPrompt()->text, "Please enter a Name to save the result under.");
    EXPECT_EQ(environment.ui().lastPrompt()->title, "Query Name");
    EXPECT_EQ(environment.ui().lastPrompt()->defaultText, "Result");
}

} // namespace
