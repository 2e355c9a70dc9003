#include "HitListFixture.h"
#include "hitlist/HitListToolbar.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QTest>
#include <algorithm>
#include <functional>

using namespace vx;
using namespace vx::test;

namespace {

// What a user without a mouse can reach: every toolbar command and the column menu.
class KeyboardAccessTest : public HitListTest {
protected:
    void SetUp() override {
        HitListTest::SetUp();
        query();
        hitList->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(hitList.get()));
        grid()->setFocus();
    }

    QString focusedButton() const {
        for (const QString& key : HitListToolbar::keys())
            if (toolbar()->widgetForAction(button(qPrintable(key))) == QApplication::focusWidget())
                return key;
        return {};
    }

    QList<double> amounts() const {
        QList<double> values;
        const int column = columnOf(QStringLiteral("Amount"));
        for (int row = 0; row < grid()->model()->rowCount(); ++row)
            values << grid()->model()->index(row, column).data(Qt::EditRole).toDouble();
        return values;
    }
};

TEST_F(KeyboardAccessTest, TabReachesEveryShownToolbarCommandAndSpacePressesIt) {
    QStringList expected;
    for (const QString& key : HitListToolbar::keys()) {
        QAction* action = button(qPrintable(key));
        if (action->isVisible() && action->isEnabled())
            expected << key;
    }
    ASSERT_TRUE(expected.contains(QStringLiteral("SaveQuery")));
    QStringList reached;
    for (int step = 0; step < 60 && reached.size() < expected.size(); ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        const QString key = focusedButton();
        if (!key.isEmpty() && !reached.contains(key))
            reached << key;
    }
    EXPECT_EQ(reached, expected) << "in toolbar order";

    QStringList saved;
    QObject::connect(hitList.get(), &VXHitList::SaveQuery, hitList.get(),
                     [&](QString& name, QString&) { saved << name; });
    toolbar()->widgetForAction(button("SaveQuery"))->setFocus();
    environment.ui().answerInput(QStringLiteral("From the keyboard"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(saved, QStringList{QStringLiteral("From the keyboard")});
}

TEST_F(KeyboardAccessTest, TheColumnMenuOpensFromTheKeyboardAndTheRightButton) {
    auto* menu = hitList->findChild<QMenu*>(QStringLiteral("mnuOption"));
    ASSERT_NE(menu, nullptr);
    const int amount = columnOf(QStringLiteral("Amount"));
    const auto onAmountCell = [&] {
        grid()->setCurrentIndex(grid()->model()->index(1, amount));
        grid()->setFocus();
    };
    struct Case {
        const char* how;
        std::function<void()> open;
        int item; // 0 ascending, 1 descending
    };
    const Case cases[] = {
        {"Shift+F10",
         [&] {
             onAmountCell();
             QTest::keyClick(grid(), Qt::Key_F10, Qt::ShiftModifier);
         },
         1},
        {"the menu key",
         [&] {
             onAmountCell();
             QTest::keyClick(grid(), Qt::Key_Menu);
         },
         0},
        {"a right click on an Amount cell",
         [&] {
             // The current cell is elsewhere: the column under the mouse counts.
             grid()->setCurrentIndex(grid()->model()->index(0, 0));
             const QRect cell = grid()->visualRect(grid()->model()->index(2, amount));
             QContextMenuEvent event(QContextMenuEvent::Mouse, cell.center(),
                                     grid()->viewport()->mapToGlobal(cell.center()));
             QApplication::sendEvent(grid()->viewport(), &event);
         },
         1},
    };
    for (const Case& each : cases) {
        each.open();
        ASSERT_TRUE(menu->isVisible()) << each.how;
        menu->hide();
        menu->actions().at(each.item)->trigger();
        QList<double> sorted = amounts();
        if (each.item == 0)
            std::sort(sorted.begin(), sorted.end());
        else
            std::sort(sorted.begin(), sorted.end(), std::greater<>());
        EXPECT_EQ(amounts(), sorted) << each.how;
    }
}

} // namespace
