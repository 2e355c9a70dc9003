#include "FindReplaceFixture.h"
#include "session/PromptText.h"

#include <QTest>
#include <algorithm>

using namespace vx;
using namespace vx::test;

namespace {

const QString WrapQuestion = "No more matches found. Start from the begining?";

using FindReplacePanelTest = FindReplaceFixture;

TEST_F(FindReplacePanelTest, MemoAndListColumnsNeverOpenThePanel) {
    for (const auto& [caption, message] :
         {std::pair<QString, QString>{"Notes", "Can't Find and Replace on a memofield"},
          std::pair<QString, QString>{"Categories", "Can't Find and Replace on a Listfield"}}) {
        ui().answerMessage(MessageAnswer::Ok);
        hitList->clickedCaption = caption;
        panel->openForClickedColumn();
        EXPECT_EQ(promptTexts(ui()).value(0), promptText("Listfield Selected", message, 0));
        EXPECT_TRUE(panel->isHidden());
        ui().clearPrompts();
    }
    EXPECT_EQ(hitList->layouts, 0);
}

TEST_F(FindReplacePanelTest, ReplaceControlsFollowTheSearchedColumn) {
    const char* replaceControls[] = {"lblReplaceWith", "cmbReplaceWith", "btnReplace",
                                     "btnReplaceAll"};
    hitList->clickedCaption = "Customer";
    panel->openForClickedColumn();
    EXPECT_FALSE(panel->isHidden());
    EXPECT_EQ(hitList->layouts, 1);
    for (const char* name : replaceControls)
        EXPECT_TRUE(child<QWidget>(name)->isEnabled()) << name;

    // Header clicks while the panel is shown switch the searched column.
    for (const QString caption : {"itemid", "IndexDate", "Invoice date", "Paid"}) {
        hitList->clickedCaption = caption;
        panel->clickedColumnChanged();
        for (const char* name : replaceControls)
            EXPECT_FALSE(child<QWidget>(name)->isEnabled())
                << name << " on " << caption.toStdString();
        EXPECT_TRUE(child<QWidget>("btnFindNext")->isEnabled());
    }
    hitList->clickedCaption = "Amount";
    panel->clickedColumnChanged();
    EXPECT_TRUE(child<QWidget>("btnReplaceAll")->isEnabled());

    ui().answerMessage(MessageAnswer::Ok);
    hitList->clickedCaption = "Notes";
    panel->clickedColumnChanged();
    EXPECT_EQ(ui().messageTexts(), QStringList{"Can't Find and Replace on a memofield"});

    // Opening on a date column disables replacing from the start; Find Next still works there.
    panel->closePanel();
    EXPECT_TRUE(panel->isHidden());
    Recordset result = hitList->resultSet();
    const QDate wanted = result.valueAt(7, result.fieldIndex("Invoice date")).toDate();
    openOn("Invoice date", wanted.toString(Qt::ISODate));
    EXPECT_FALSE(child<QWidget>("btnReplace")->isEnabled());
    click("btnFindNext");
    EXPECT_EQ(result.value("Invoice date").toDate(), wanted);
    EXPECT_GE(result.position(), 1);
    EXPECT_LE(result.position(), 7);
}

TEST_F(FindReplacePanelTest, FindNextIgnoresCaseWrapsOnYesAndStopsOnTheLastRowOnNo) {
    const QList<qint32> rows = resultItems();
    const QList<qint32> matches = itemsOfCustomer("Acme Tools", "ktitem.deleted = 0");
    ASSERT_GE(matches.size(), 3);
    // The search starts after the current (first) row.
    const QList<qint32> afterFirst = matches.first() == rows.first() ? matches.mid(1) : matches;

    openOn("Customer", "ACME tOOLS");
    for (qint32 expected : afterFirst) {
        click("btnFindNext");
        EXPECT_EQ(hitList->currentItemId(), expected);
        EXPECT_EQ(hitList->currentItemIdsRaised.last(), expected);
    }
    EXPECT_EQ(findWhat()->count(), 1);
    EXPECT_EQ(findWhat()->itemText(0), "ACME tOOLS");

    // Past the last match: Yes goes round to the first match.
    ui().answerMessage(MessageAnswer::Yes);
    click("btnFindNext");
    EXPECT_EQ(promptTexts(ui()),
              QStringList{promptText("Find", WrapQuestion, MessageStyle::YesNo)});
    EXPECT_EQ(hitList->currentItemId(), matches.first());

    // No leaves the last row current.
    for (qsizetype i = 1; i < matches.size(); ++i)
        click("btnFindNext");
    EXPECT_EQ(hitList->currentItemId(), matches.last());
    ui().answerMessage(MessageAnswer::No);
    click("btnFindNext");
    EXPECT_EQ(ui().messageTexts(), (QStringList{WrapQuestion, WrapQuestion}));
    EXPECT_EQ(hitList->currentItemId(), rows.last());

    // A refused value searches nothing.
    openOn("Amount", "abc");
    ui().answerMessage(MessageAnswer::Ok);
    click("btnFindNext");
    EXPECT_EQ(ui().lastPrompt()->text, "Invalid number entered!");
    EXPECT_EQ(hitList->currentItemId(), rows.last());
}

TEST_F(FindReplacePanelTest, DeclinedReplacementIsUndoneAndTheNextMatchIsOffered) {
    const QList<qint32> before = itemsOfCustomer("O'Malley Bakery");
    ASSERT_GE(before.size(), 2);
    const QString question = "Match found! Changes made will be permanent. Proceed with "
                             "Replacing o'malley BAKERY with O'Malley Bakehouse?";
    ui().answerMessage(MessageAnswer::No).answerMessage(MessageAnswer::Yes);
    openOn("Customer", "o'malley BAKERY", "O'Malley Bakehouse");
    click("btnReplace");

    EXPECT_EQ(ui().messageTexts(), (QStringList{question, question}));
    EXPECT_EQ(ui().lastPrompt()->title, "Replace");
    const QList<qint32> offered = hitList->currentItemIdsRaised;
    ASSERT_EQ(offered.size(), 2);
    EXPECT_TRUE(before.contains(offered[0]));
    EXPECT_EQ(customerOf(offered[0]), "O'Malley Bakery");
    EXPECT_EQ(customerOf(offered[1]), "O'Malley Bakehouse");
    EXPECT_EQ(itemsOfCustomer("O'Malley Bakery").size(), before.size() - 1);
    EXPECT_EQ(hitList->requeries, 1);
    EXPECT_EQ(hitList->connection().transactionLevel(), 0);
    EXPECT_EQ(replaceWith()->findText("O'Malley Bakehouse"), 0);
}

TEST_F(FindReplacePanelTest, ReplacingKeepsToTheDocumentsOfTheResult) {
    useQuery(sampleResultQuery("Invoices.Status <> 'Paid'"));
    const QList<qint32> all = itemsOfCustomer("O'Malley Bakery");
    const QList<qint32> inResult = itemsOfCustomer("O'Malley Bakery", "ktitem.deleted = 0 AND "
                                                                      "Invoices.Status <> 'Paid'");
    ASSERT_GE(inResult.size(), 2);
    ASSERT_GT(all.size(), inResult.size());

    // Replace offers each document of the result once: every offer declined, then no second round.
    for (qsizetype i = 0; i <= inResult.size(); ++i)
        ui().answerMessage(MessageAnswer::No);
    openOn("Customer", "O'Malley Bakery", "Someone Else");
    click("btnReplace");
    QList<qint32> offered = hitList->currentItemIdsRaised;
    std::sort(offered.begin(), offered.end());
    EXPECT_EQ(offered, inResult);
    EXPECT_EQ(ui().pendingAnswers(), 0);
    EXPECT_EQ(ui().messageTexts().count(WrapQuestion), 1);
    EXPECT_EQ(ui().lastPrompt()->title, "Find");
    EXPECT_EQ(itemsOfCustomer("O'Malley Bakery"), all);
    EXPECT_EQ(hitList->requeries, 0);
    EXPECT_EQ(hitList->connection().transactionLevel(), 0);

    // Replace All changes exactly those and counts them.
    ui().clearPrompts();
    ui().answerMessage(MessageAnswer::Yes).answerMessage(MessageAnswer::Ok);
    openOn("Customer", "o'malley bakery", "O'Malley Bakehouse");
    click("btnReplaceAll");
    EXPECT_EQ(
        promptTexts(ui()),
        (QStringList{promptText("Replace All",
                                "Changes made will be permanent. Proceed in replacing all "
                                "occurances of o'malley bakery with O'Malley Bakehouse?",
                                MessageStyle::YesNo),
                     promptText("Replaced", QString::number(inResult.size()) + " Change(s) Made",
                                MessageStyle::OkOnly | MessageStyle::Information)}));
    EXPECT_EQ(itemsOfCustomer("O'Malley Bakehouse"), inResult);
    QList<qint32> untouched = all;
    for (qint32 id : inResult)
        untouched.removeAll(id);
    EXPECT_EQ(itemsOfCustomer("O'Malley Bakery"), untouched);
    EXPECT_EQ(hitList->requeries, 1);
    EXPECT_FALSE(ui().busy());
}

TEST_F(FindReplacePanelTest, ReplaceAllChangesNothingWithoutMatchOrConsent) {
    const QList<qint32> before = itemsOfCustomer("Acme Tools");
    ASSERT_FALSE(before.isEmpty());
    ui().answerMessage(MessageAnswer::No);
    openOn("Customer", "Acme Tools", "Acme Toolworks");
    click("btnReplaceAll");
    EXPECT_EQ(ui().lastPrompt()->title, "Replace All");
    EXPECT_EQ(itemsOfCustomer("Acme Tools"), before);
    EXPECT_TRUE(itemsOfCustomer("Acme Toolworks").isEmpty());
    EXPECT_EQ(hitList->requeries, 1);

    ui().clearPrompts();
    ui().answerMessage(MessageAnswer::Ok);
    openOn("Customer", "Nobody Ltd", "Acme Toolworks");
    click("btnReplaceAll");
    EXPECT_EQ(promptTexts(ui()), QStringList{promptText("Replace All", "No matches found!", 0)});
    EXPECT_EQ(hitList->requeries, 2);
}

TEST_F(FindReplacePanelTest, ShiftCtrlShortcutsRunTheButtons) {
    const auto shiftCtrl = Qt::ShiftModifier | Qt::ControlModifier;
    EXPECT_FALSE(panel->handleShortcut(Qt::Key_F, shiftCtrl)); // hidden

    openOn("Customer", "Acme Tools", "Acme Toolworks");
    const qint32 first = hitList->currentItemId();
    EXPECT_FALSE(panel->handleShortcut(Qt::Key_F, Qt::ControlModifier));
    EXPECT_FALSE(panel->handleShortcut(Qt::Key_X, shiftCtrl));
    EXPECT_TRUE(panel->handleShortcut(Qt::Key_F, shiftCtrl));
    EXPECT_NE(hitList->currentItemId(), first);
    EXPECT_EQ(hitList->currentItemIdsRaised.size(), 1);

    findWhat()->setEditText("Nobody Ltd");
    ui().answerMessage(MessageAnswer::No);
    EXPECT_TRUE(panel->handleShortcut(Qt::Key_R, shiftCtrl));
    EXPECT_EQ(ui().lastPrompt()->text, WrapQuestion);

    ui().answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(panel->handleShortcut(Qt::Key_A, shiftCtrl));
    EXPECT_EQ(ui().lastPrompt()->text, "No matches found!");
    EXPECT_EQ(ui().prompts().size(), 2);

    // Replacing is off on a yes/no column, so its shortcuts are not taken.
    hitList->clickedCaption = "Paid";
    panel->clickedColumnChanged();
    EXPECT_FALSE(panel->handleShortcut(Qt::Key_R, shiftCtrl));
    EXPECT_FALSE(panel->handleShortcut(Qt::Key_A, shiftCtrl));
    EXPECT_EQ(ui().prompts().size(), 2);

    const int layouts = hitList->layouts;
    EXPECT_TRUE(panel->handleShortcut(Qt::Key_C, shiftCtrl));
    EXPECT_TRUE(panel->isHidden());
    EXPECT_EQ(hitList->layouts, layouts + 1);
    EXPECT_FALSE(panel->handleShortcut(Qt::Key_C, shiftCtrl));
    EXPECT_EQ(itemsOfCustomer("Acme Toolworks"), QList<qint32>{});
}

TEST_F(FindReplacePanelTest, PanelShowsEveryCaptionUnclipped) {
    openOn("Customer", "Acme Tools", "Acme Toolworks");
    panel->resize(panel->sizeHint());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&host));
    EXPECT_EQ(panel->height(), panel->sizeHint().height());
    const QStringList captions{
        "Find What:", "Replace With:", "* For shortcuts use Shift+Ctrl and the underlined letter"};
    for (QLabel* label : panel->findChildren<QLabel*>()) {
        EXPECT_TRUE(captions.contains(label->text())) << label->text().toStdString();
        EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
        EXPECT_TRUE(panel->rect().contains(label->geometry()));
    }
    for (QPushButton* button : panel->findChildren<QPushButton*>()) {
        EXPECT_GE(button->width(), button->sizeHint().width());
        EXPECT_GE(button->height(), button->sizeHint().height());
        EXPECT_TRUE(panel->rect().contains(button->geometry()));
    }
    EXPECT_EQ(child<QPushButton>("btnReplaceAll")->text(), "Replace &All");
}

} // namespace
