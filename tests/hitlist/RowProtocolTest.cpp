#include "HitListFixture.h"
#include "session/companions/VXDynaForm.h"
#include "support/SampleFormFields.h"
#include "support/SpyCompanions.h"

#include <QComboBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <functional>

using namespace vx;
using namespace vx::test;

namespace {

// The hit list as a host sees it: every CurrentItemID and LocateRevisionDoc in order, with the
// record form's refreshes between them ("form"; each refresh refills the list field once).
class RowProtocolTest : public HitListTest {
protected:
    RowProtocolTest()
        : spies(SpyCompanions::DynaForm) {
        spies.answers().fields = sampleFormFields();
    }

    void SetUp() override {
        HitListTest::SetUp();
        QObject::connect(hitList.get(), &VXHitList::CurrentItemID, hitList.get(),
                         [this](qint32& id) { note("CurrentItemID " + QString::number(id)); });
        QObject::connect(hitList.get(), &VXHitList::LocateRevisionDoc, hitList.get(),
                         [this](QString&, QString&, QString& version, QString& item) {
                             note("LocateRevisionDoc " + item + " v" + version);
                         });
        query();
        clearProtocol();
    }

    // The events and refreshes since the last call.
    QStringList protocol() {
        flushRefreshes();
        const QStringList seen = log;
        log.clear();
        return seen;
    }
    void clearProtocol() { protocol(); }

    static QStringList moved(qint32 itemId) {
        return {"CurrentItemID " + QString::number(itemId), "form"};
    }

    QWidget* panelChild(const char* name) const {
        return hitList->findChild<QWidget*>(QString::fromLatin1(name));
    }
    void openFind(const QString& caption, const QString& find, const QString& replace = {}) {
        chooseColumnMenu(caption, 2);
        static_cast<QComboBox*>(panelChild("cmbFindWhat"))->setEditText(find);
        static_cast<QComboBox*>(panelChild("cmbReplaceWith"))->setEditText(replace);
        clearProtocol();
    }
    QString cell(int row, const QString& caption) const {
        return grid()->model()->index(row, columnOf(caption)).data().toString();
    }

    SpyCompanions spies;

private:
    void note(const QString& event) {
        flushRefreshes();
        log << event;
    }
    void flushRefreshes() {
        const qsizetype refreshes =
            spies.callsStartingWith(QStringLiteral("VXDynaForm.ClearFieldList")).size();
        for (; m_refreshes < refreshes; ++m_refreshes)
            log << QStringLiteral("form");
    }

    QStringList log;
    qsizetype m_refreshes = 0;
};

TEST_F(RowProtocolTest, NavigationRaisesOneEventPerMoveAndNothingAtTheEnds) {
    const int last = grid()->model()->rowCount() - 1;
    ASSERT_GT(last, 3);
    struct Step {
        const char* what;
        std::function<void()> act;
        QStringList expected;
    };
    const Step steps[] = {
        {"First on the first row", [&] { click("First"); }, {}},
        {"Previous on the first row", [&] { click("Previous"); }, {}},
        {"Next", [&] { click("Next"); }, moved(itemAt(1))},
        {"Last", [&] { click("Last"); }, moved(itemAt(last))},
        {"Next on the last row", [&] { click("Next"); }, {}},
        {"Last on the last row", [&] { click("Last"); }, {}},
        {"Previous", [&] { click("Previous"); }, moved(itemAt(last - 1))},
        {"Ctrl+Home", [&] { QTest::keyClick(grid(), Qt::Key_Home, Qt::ControlModifier); },
         moved(itemAt(0))},
        {"Ctrl+End", [&] { QTest::keyClick(grid(), Qt::Key_End, Qt::ControlModifier); },
         moved(itemAt(last))},
        {"a click on a row", [&] { clickRow(2); }, moved(itemAt(2))},
        {"a click on the current row", [&] { clickRow(2); }, {}},
        {"arrow down", [&] { QTest::keyClick(grid(), Qt::Key_Down); }, moved(itemAt(3))},
        {"reading SelectedItems", [&] { hitList->selectedItems(); }, {}},
    };
    for (const Step& step : steps) {
        step.act();
        EXPECT_EQ(protocol(), step.expected) << step.what;
    }
    EXPECT_EQ(hitList->currentItemId(), itemAt(3));
    EXPECT_EQ(hitList->selectedItems(), QVariantList{itemAt(3)});
}

TEST_F(RowProtocolTest, SelectionWalkOverOtherRowsRaisesNothing) {
    clickRow(2);
    EXPECT_EQ(protocol(), moved(itemAt(2)));
    auto* selection = grid()->selectionModel();
    for (const int row : {5, 4})
        selection->select(grid()->model()->index(row, 0),
                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
    EXPECT_EQ(hitList->selectedItems(), (QVariantList{itemAt(2), itemAt(5), itemAt(4)}));
    EXPECT_EQ(grid()->boundRecordset().position(), 4) << "the result ends on the last one";

    // Over every row, the grid catches up once at the end instead of scrolling to each row.
    grid()->selectAll();
    QSignalSpy gridMoves(selection, &QItemSelectionModel::currentChanged);
    EXPECT_EQ(hitList->selectedItems().size(), grid()->model()->rowCount());
    EXPECT_EQ(gridMoves.count(), 1);
    EXPECT_EQ(grid()->currentIndex().row(), grid()->boundRecordset().position());
    EXPECT_EQ(protocol(), QStringList());

    // A double click selects from the current row to the last.
    clickRow(3);
    EXPECT_EQ(protocol(), moved(itemAt(3)));
    emit grid()->dblClick();
    EXPECT_EQ(grid()->selectionModel()->selectedRows().size(), grid()->model()->rowCount() - 3);
    EXPECT_EQ(protocol(), QStringList());
    EXPECT_EQ(hitList->currentItemId(), itemAt(3));
}

TEST_F(RowProtocolTest, MovingPastEitherEndOfTheVersionsReportsThatEndAgain) {
    clickRow(rowOfItem(13));
    EXPECT_EQ(protocol(), moved(13));
    click("Archive");
    ASSERT_TRUE(button("Archive")->isChecked());
    ASSERT_EQ(grid()->model()->rowCount(), 2);
    EXPECT_EQ(protocol(), QStringList()) << "showing the versions reports none of them";
    const QString first = "LocateRevisionDoc 13 v" + cell(0, QStringLiteral("Version"));
    const QString second = "LocateRevisionDoc 13 v" + cell(1, QStringLiteral("Version"));
    ASSERT_NE(first, second);
    struct Step {
        const char* key;
        QStringList expected;
    };
    const Step steps[] = {{"Previous", {first}},  // before the first version
                          {"First", {}},          // already there: no move
                          {"Next", {second}},     //
                          {"Next", {second}},     // beyond the last version
                          {"Next", {second}},     //
                          {"Last", {}},           //
                          {"Previous", {first}},  //
                          {"Previous", {first}}}; //
    for (const Step& step : steps) {
        click(step.key);
        EXPECT_EQ(protocol(), step.expected) << step.key;
    }
    EXPECT_EQ(grid()->currentIndex().row(), 0);
    // The arrow keys in the grid: past either end they report that end again.
    grid()->setFocus();
    const struct {
        Qt::Key key;
        const QString& expected;
    } arrows[] = {
        {Qt::Key_Up, first}, {Qt::Key_Down, second}, {Qt::Key_Down, second}, {Qt::Key_Up, first}};
    for (const auto& arrow : arrows) {
        QTest::keyClick(grid(), arrow.key);
        EXPECT_EQ(protocol(), QStringList{arrow.expected}) << arrow.key;
    }
    click("Archive");
    EXPECT_EQ(protocol(), QStringList()) << "back to the results without a move";
}

TEST_F(RowProtocolTest, FindNextMakesEachMatchCurrentOnce) {
    // A customer on at least two rows, searched from the first row.
    const QString customer = cell(3, QStringLiteral("Customer"));
    QList<int> matches;
    for (int row = 0; row < grid()->model()->rowCount(); ++row)
        if (cell(row, QStringLiteral("Customer")).compare(customer, Qt::CaseInsensitive) == 0)
            matches << row;
    ASSERT_GE(matches.size(), 2);
    openFind(QStringLiteral("Customer"), customer.toUpper());
    auto* findNext = static_cast<QPushButton*>(panelChild("btnFindNext"));
    for (const int row : matches) {
        if (row == 0)
            continue;
        findNext->click();
        EXPECT_EQ(protocol(), moved(itemAt(row))) << "match on row " << row;
    }
    // Past the last match: No stays on the last row, which is no move when it is the last.
    environment.ui().answerMessage(MessageAnswer::No);
    findNext->click();
    const int last = grid()->model()->rowCount() - 1;
    EXPECT_EQ(protocol(), matches.last() == last ? QStringList() : moved(itemAt(last)));
    EXPECT_EQ(grid()->currentIndex().row(), last);
}

TEST_F(RowProtocolTest, ReplaceReportsTheMatchAndThenTheRequery) {
    const QString customer = cell(4, QStringLiteral("Customer"));
    openFind(QStringLiteral("Customer"), customer, QStringLiteral("Renamed Customer"));
    environment.ui().answerMessage(MessageAnswer::Yes);
    static_cast<QPushButton*>(panelChild("btnReplace"))->click();
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().prompts().first().title, QStringLiteral("Replace"));
    const qint32 replaced = hitList->currentItemId();
    const int row = rowOfItem(replaced);
    ASSERT_GE(row, 0);
    EXPECT_EQ(cell(row, QStringLiteral("Customer")), QStringLiteral("Renamed Customer"));
    EXPECT_EQ(protocol(), moved(replaced) + moved(replaced))
        << "the move to the match, then the requery keeping it current";
}

TEST_F(RowProtocolTest, SavingByButtonOrFormKeyRequeriesWithOneEvent) {
    clickRow(5);
    const qint32 item = itemAt(5);
    click("Edit");
    ASSERT_TRUE(button("Save")->isVisible());
    clearProtocol();
    click("Save");
    EXPECT_EQ(protocol(), moved(item)) << "Save";

    auto* form = hitList->findChild<VXDynaForm*>(QStringLiteral("Group"));
    ASSERT_NE(form, nullptr);
    short enter = 13;
    short escape = 27;
    short shift = 0;
    environment.ui().answerMessage(MessageAnswer::Yes);
    emit form->KeyDown(enter, shift);
    EXPECT_EQ(protocol(), moved(item)) << "Enter in the form";
    emit form->KeyDown(escape, shift);
    EXPECT_EQ(protocol(), QStringList()) << "leaving edit mode moves nothing";
    EXPECT_EQ(hitList->currentItemId(), item);
}

} // namespace
