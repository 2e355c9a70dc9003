#include "query/VXFavourites.h"
#include "server/ControlFactory.h"
#include "session/PromptText.h"
#include "session/Settings.h"
#include "support/SmallDisk.h"
#include "support/TestEnvironment.h"

#include <QAction>
#include <QCoreApplication>
#include <QFile>
#include <QListWidget>
#include <QMenu>
#include <QTest>
#include <algorithm>
#include <gtest/gtest.h>

using namespace vx;

namespace {

class FavouritesTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    VXFavourites favourites;
    QListWidget* list = nullptr;
    QString group = QStringLiteral("Invoices");

    void SetUp() override {
        list = favourites.findChild<QListWidget*>(QStringLiteral("ButtonBar"));
        ASSERT_NE(list, nullptr);
    }

    bool add(QString name, QString query) { return favourites.AddItem(name, query); }
    bool init(QString name) { return favourites.Init(name); }

    QStringList names() const {
        QStringList texts;
        for (int i = 0; i < list->count(); ++i)
            texts << list->item(i)->text();
        return texts;
    }
    QStringList storedKeys(const QString& section) const {
        QStringList keys = settingKeys(section);
        std::sort(keys.begin(), keys.end());
        return keys;
    }
    void select(int row) { list->setCurrentRow(row); }
    void doubleClick(int row) {
        const QPoint where =
            row < 0 ? QPoint(2, 2) : list->visualItemRect(list->item(row)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, where);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, where);
    }
};

TEST_F(FavouritesTest, FavouritesSurviveDoneAndInitNumericNamesIncluded) {
    EXPECT_FALSE(init(group)) << "a group without favourites loads none";
    EXPECT_TRUE(add("2005", "SELECT 1"));
    EXPECT_TRUE(add("Big ones", "SELECT 2"));
    EXPECT_FALSE(add(QString(), "SELECT 3"));
    EXPECT_TRUE(settingKeys(group).isEmpty()) << "nothing is saved before Done";
    favourites.Done();
    EXPECT_EQ(list->count(), 0);
    EXPECT_EQ(getSetting(group, "Total"), "2");
    EXPECT_EQ(getSetting(group, "1"), "N@2005");
    EXPECT_EQ(getSetting(group, "2"), "Big ones");
    EXPECT_EQ(getSetting(group, "N@2005"), "SELECT 1");
    EXPECT_EQ(getSetting(group, "Big ones"), "SELECT 2");

    EXPECT_TRUE(init(group));
    EXPECT_EQ(names(), QStringList({"2005", "Big ones"}));
    EXPECT_EQ(list->item(0)->data(Qt::UserRole).toString(), "N@2005");
    EXPECT_FALSE(list->item(0)->icon().isNull());

    // The same group again saves and reloads without doubling; another group starts empty
    // after saving this one.
    EXPECT_TRUE(init(group));
    EXPECT_EQ(names(), QStringList({"2005", "Big ones"}));
    EXPECT_TRUE(add("Third", "SELECT 4"));
    EXPECT_FALSE(init("Receipts"));
    EXPECT_EQ(list->count(), 0);
    EXPECT_EQ(getSetting(group, "Total"), "3");

    // An empty group name changes nothing: Done still saves to the loaded group.
    EXPECT_TRUE(add("Receipt 1", "SELECT 5"));
    EXPECT_FALSE(init(QString()));
    EXPECT_EQ(names(), QStringList({"Receipt 1"}));
    favourites.Done();
    EXPECT_EQ(getSetting("Receipts", "1"), "Receipt 1");
}

TEST_F(FavouritesTest, DuplicateNamesAreRefusedAndLeaveEverythingAsItWas) {
    init(group);
    ASSERT_TRUE(add("Open", "SELECT 1"));
    environment.ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(add("Open", "SELECT 2"));
    EXPECT_FALSE(add("OPEN", "SELECT 3")) << "the settings store ignores case, so must names";
    EXPECT_EQ(
        test::promptTexts(environment.ui()),
        QStringList(2, test::promptText("AddItem", "A favourite with this name already exists.",
                                        MessageStyle::OkOnly | MessageStyle::Exclamation)));
    EXPECT_EQ(names(), QStringList({"Open"}));
    favourites.Done();
    EXPECT_EQ(getSetting(group, "Open"), "SELECT 1");
}

TEST_F(FavouritesTest, DeletingLeavesExactlyTheRemainingFavouritesAfterDone) {
    saveSetting(group, "Stale", "left from long ago");
    init(group);
    add("One", "SELECT 1");
    add("2", "SELECT 2");
    add("Three", "SELECT 3");
    favourites.resize(220, 300);
    favourites.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&favourites));
    EXPECT_EQ(list->geometry(), favourites.rect()) << "the list fills the control";

    select(0);
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(names(), QStringList({"2", "Three"}));
    EXPECT_TRUE(settingKeys(group).isEmpty()) << "deleting removes the whole section";

    // The pop-up menu's Delete does the same.
    select(1);
    QTest::mouseClick(list->viewport(), Qt::RightButton, {}, QPoint(4, 4));
    auto* menu = favourites.findChild<QMenu*>(QStringLiteral("mnuAction"));
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible());
    EXPECT_EQ(menu->title(), "Action");
    menu->hide();
    select(1);
    favourites.findChild<QAction*>(QStringLiteral("mnuDelete"))->trigger();
    EXPECT_EQ(names(), QStringList({"2"}));

    favourites.Done();
    EXPECT_EQ(storedKeys(group), QStringList({"1", "N@2", "Total"}));
    EXPECT_EQ(getSetting(group, "Total"), "1");
    EXPECT_EQ(getSetting(group, "N@2"), "SELECT 2");
}

TEST_F(FavouritesTest, ChoosingRaisesTheNameAndQueryAndNothingOnAnEmptyList) {
    QList<QStringList> chosen;
    QObject::connect(&favourites, &VXFavourites::SelectedItem, [&](QString& name, QString& query) {
        chosen << QStringList{name, query};
    });
    favourites.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&favourites));
    doubleClick(-1);
    EXPECT_EQ(chosen.count(), 0);

    init(group);
    add("1999", "SELECT old");
    add("Recent", "SELECT new");
    QCoreApplication::processEvents(); // the list lays its items out later
    doubleClick(0);
    select(1);
    favourites.findChild<QAction*>(QStringLiteral("mnuFind"))->trigger();
    EXPECT_EQ(chosen, QList<QStringList>({{"1999", "SELECT old"}, {"Recent", "SELECT new"}}));

    // Without the mouse: Enter chooses, the menu key and Shift+F10 open the Action menu.
    chosen.clear();
    select(0);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(chosen, QList<QStringList>({{"1999", "SELECT old"}}));
    auto* menu = favourites.findChild<QMenu*>(QStringLiteral("mnuAction"));
    for (const auto& [key, modifiers] :
         {std::pair{Qt::Key_Menu, Qt::NoModifier}, std::pair{Qt::Key_F10, Qt::ShiftModifier}}) {
        QTest::keyClick(list, key, modifiers);
        EXPECT_TRUE(menu->isVisible()) << key;
        menu->hide();
    }
}

TEST_F(FavouritesTest, RemoveItemTakesOnlyTheListEntryAndReportsUnknownOnes) {
    init(group);
    add("One", "SELECT 1");
    add("2", "SELECT 2");
    add("Three", "SELECT 3");
    QVariant byKey = QStringLiteral("N@2");
    QVariant byPosition = 2;
    EXPECT_TRUE(favourites.RemoveItem(byKey));
    EXPECT_TRUE(favourites.RemoveItem(byPosition));
    EXPECT_EQ(names(), QStringList({"One"}));

    environment.ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    QVariant unknown = QStringLiteral("Nobody");
    QVariant outOfRange = 5;
    EXPECT_FALSE(favourites.RemoveItem(unknown));
    EXPECT_FALSE(favourites.RemoveItem(outOfRange));
    const int critical = MessageStyle::OkOnly | MessageStyle::Critical;
    EXPECT_EQ(test::promptTexts(environment.ui()),
              QStringList({test::promptText("RemoveItem", "Element not found", critical),
                           test::promptText("RemoveItem", "Index out of bounds", critical)}));

    favourites.Done();
    EXPECT_EQ(storedKeys(group), QStringList({"1", "One", "Total"}));
}

TEST_F(FavouritesTest, UnreadableStoreIsReportedWithTheEntryBeingLoaded) {
    saveSetting(group, "Total", "3");
    saveSetting(group, "1", "First");
    saveSetting(group, "First", "SELECT 1");
    saveSetting(group, "2", "first"); // the same name again, in other letters
    saveSetting(group, "3", "Never");
    environment.ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(init(group));
    ASSERT_EQ(environment.ui().prompts().size(), 2);
    EXPECT_EQ(environment.ui().prompts()[0].title, "Favourites: Init()");
    EXPECT_EQ(environment.ui().prompts()[0].style, MessageStyle::OkOnly | MessageStyle::Critical);
    EXPECT_EQ(
        test::promptText(environment.ui().prompts()[1]),
        test::promptText("", "key: first name: first\rquery: SELECT 1", MessageStyle::OkOnly));
    EXPECT_EQ(names(), QStringList({"First"})) << "what loaded before the error stays";

    // A total that is no number.
    favourites.Done();
    environment.ui().clearPrompts();
    saveSetting("Broken", "Total", "many");
    environment.ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(init("Broken"));
    EXPECT_EQ(environment.ui().messageTexts(),
              QStringList({"Type mismatch", "key:  name: \rquery: "}));
}

TEST_F(FavouritesTest, AStoreWithoutRoomKeepsThePreviousListWholeAndSaysSo) {
    // Room for a short list, not for three long queries at once.
    test::SmallDisk disk(16 * 1024);
    ASSERT_TRUE(disk.isReady());
    setSettingsDirectory(disk.folder());
    EXPECT_FALSE(init(group));
    EXPECT_TRUE(add("Old", "SELECT 0"));
    favourites.Done();
    ASSERT_TRUE(environment.ui().prompts().isEmpty());

    ASSERT_TRUE(init(group));
    const QString longQuery = "SELECT * FROM Invoices WHERE " + QString("x").repeated(6000);
    for (const QString name : {"First", "Second", "Third"})
        EXPECT_TRUE(add(name, longQuery));
    environment.ui().answerMessage(MessageAnswer::Ok);
    favourites.Done();
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_TRUE(environment.ui().prompts()[0].text.startsWith("The settings could not be saved"))
        << environment.ui().prompts()[0].text.toStdString();
    EXPECT_EQ(names(), QStringList({"Old", "First", "Second", "Third"})) << "kept in memory";

    // On disk (this process's settings cache still holds the refused values): the list as it
    // was before, not a new total over old entries.
    disk.lift();
    QFile store(disk.folder() + "/VXUILib.ini");
    ASSERT_TRUE(store.open(QIODevice::ReadOnly));
    const QString stored = QString::fromUtf8(store.readAll());
    EXPECT_TRUE(stored.contains("Total=1")) << stored.toStdString();
    EXPECT_TRUE(stored.contains("1=Old")) << stored.toStdString();
    EXPECT_FALSE(stored.contains("First")) << stored.toStdString();
}

} // namespace

namespace {

// The count is a stored number anyone can edit: a huge one must not mean that many reads (the
// load would take hours), and positions beyond the entries present still load in order.
TEST_F(FavouritesTest, AHugeStoredTotalLoadsOnlyThePositionsPresent) {
    saveSetting(group, "Total", "2000000000");
    saveSetting(group, "7", "Later");
    saveSetting(group, "Later", "SELECT 7");
    saveSetting(group, "1", "First");
    saveSetting(group, "First", "SELECT 1");
    saveSetting(group, "0", "Zero"); // not a position
    saveSetting(group, "Zero", "SELECT 0");
    EXPECT_TRUE(init(group));
    EXPECT_EQ(names(), QStringList({"First", "Later"}));
    EXPECT_TRUE(environment.ui().prompts().isEmpty());
}

} // namespace
