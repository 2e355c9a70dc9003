#include "DemoWindow.h"

#include "IndexPage.h"
#include "SearchPage.h"
#include "companions/DefaultCompanions.h"
#include "data/Recordset.h"
#include "session/GroupConnection.h"
#include "session/SystemFolder.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMenuBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <gtest/gtest.h>

namespace {

using vx::demo::DemoWindow;

class DemoWindowTest : public ::testing::Test {
protected:
    DemoWindowTest() { vx::registerDefaultCompanions(); }

    vx::test::TestEnvironment environment;
    vx::test::SampleRepository sample;
};

TEST_F(DemoWindowTest, OpensTheSampleGroupAndRefusesAMissingOneWithAMessage) {
    DemoWindow window;
    EXPECT_TRUE(window.searchPage()->unconnectedEvents().isEmpty())
        << window.searchPage()->unconnectedEvents().join(", ").toStdString();

    const QString missing = environment.filePath("nowhere/Group.ini");
    environment.ui().answerMessage(vx::MessageAnswer::Ok);
    EXPECT_FALSE(window.openGroup(missing));
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().prompts()[0].text,
              QStringLiteral("The group initialisation file \"%1\" does not exist.")
                  .arg(QDir::toNativeSeparators(missing)));
    EXPECT_EQ(environment.ui().prompts()[0].title, "Open group");

    ASSERT_TRUE(window.openGroup(sample.initFilePath()));
    EXPECT_EQ(window.session().groupName, "Invoices");
    EXPECT_EQ(window.session().groupId, sample.groupId());
    EXPECT_EQ(window.session().formPath, sample.formDefinitionPath());
    EXPECT_EQ(window.session().queryFormPath, sample.queryFormPath());
    EXPECT_EQ(window.initFileIn(sample.dir()), sample.initFilePath());
    EXPECT_EQ(environment.ui().prompts().size(), 1) << "opening the sample asks nothing";
}

TEST_F(DemoWindowTest, QueryHandOverFileRunsTheSearchAtOnce) {
    DemoWindow window;
    ASSERT_TRUE(window.openGroup(sample.initFilePath()));
    window.pages()->setCurrentWidget(window.indexPage());
    const QString path = vx::handOverFilePath("~znfind");
    ASSERT_TRUE(QDir().mkpath(vx::handOverFolder()));
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Main-Invoices]\r\nCustomer=Kestrel Air\r\n");
    }
    window.applyHandOvers();
    EXPECT_FALSE(QFile::exists(path)) << "a hand-over file is used once";
    EXPECT_EQ(window.pages()->currentWidget(), window.searchPage());
    ASSERT_GT(window.currentItemId(), 0) << "the search ran and the hit list raised CurrentItemID";

    vx::Connection connection = vx::openGroupConnection(sample.initFilePath());
    vx::Recordset row;
    row.open(QStringLiteral("select Customer from Invoices where itemid = %1")
                 .arg(window.currentItemId()),
             connection);
    ASSERT_FALSE(row.eof());
    EXPECT_EQ(row.value("Customer").toString(), "Kestrel Air");
    EXPECT_TRUE(environment.ui().prompts().isEmpty());

    // Nothing waiting: nothing changes.
    window.pages()->setCurrentWidget(window.indexPage());
    window.applyHandOvers();
    EXPECT_EQ(window.pages()->currentWidget(), window.indexPage());
}

QWidget* hitListToolbar(const DemoWindow& window) {
    return window.searchPage()->hitListControl()->findChild<QWidget*>("tbToolbar1");
}

TEST_F(DemoWindowTest, AltKeysAreUniqueAndTabFollowsTheLayout) {
    DemoWindow window;
    ASSERT_TRUE(window.openGroup(sample.initFilePath()));
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    // Who answers Alt+letter on the page shown: the menu bar, the tabs and the shown buttons and
    // labels with a buddy. Two owners of one letter make Alt only move the focus between them.
    const auto owners = [&] {
        QMap<QString, QStringList> byKey;
        const auto note = [&](const QString& text) {
            const QString key = QKeySequence::mnemonic(text).toString();
            if (!key.isEmpty())
                byKey[key] << text;
        };
        for (QAction* menu : window.menuBar()->actions())
            note(menu->text());
        for (const QTabBar* tabs : window.findChildren<QTabBar*>()) {
            if (tabs->isVisible())
                for (int i = 0; i < tabs->count(); ++i)
                    note(tabs->tabText(i));
        }
        for (const QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
            if (button->isVisible())
                note(button->text());
        }
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            if (label->isVisible() && label->buddy())
                note(label->text());
        }
        return byKey;
    };
    for (QWidget* page :
         {static_cast<QWidget*>(window.indexPage()), static_cast<QWidget*>(window.searchPage())}) {
        window.pages()->setCurrentWidget(page);
        const QMap<QString, QStringList> byKey = owners();
        for (auto it = byKey.begin(); it != byKey.end(); ++it)
            EXPECT_EQ(it.value().size(), 1)
                << page->objectName().toStdString() << ": " << it.key().toStdString() << " is "
                << it.value().join(" and ").toStdString();
    }

    // Tab goes down the search page as it is laid out: favourites, Clear, Search, the results'
    // toolbar.
    window.pages()->setCurrentWidget(window.searchPage());
    QWidget* favourites =
        window.searchPage()->favouritesControl()->findChild<QWidget*>("ButtonBar");
    ASSERT_NE(favourites, nullptr);
    favourites->setFocus();
    QStringList visited;
    for (int step = 0; step < 3; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget* focused = QApplication::focusWidget();
        visited << (focused->parentWidget() == hitListToolbar(window) ? QStringLiteral("toolbar")
                                                                      : focused->objectName());
    }
    EXPECT_EQ(visited, (QStringList{"clearCriteria", "search", "toolbar"}));

    // Alt+S on the search page presses the Search button: with no criteria, it says what is
    // missing.
    window.pages()->tabBar()->setFocus();
    QTest::keyClick(window.windowHandle(), Qt::Key_I, Qt::AltModifier);
    EXPECT_EQ(window.pages()->currentWidget(), window.indexPage());
    QTest::keyClick(window.windowHandle(), Qt::Key_E, Qt::AltModifier);
    EXPECT_EQ(window.pages()->currentWidget(), window.searchPage());
    window.statusBar()->clearMessage();
    QSignalSpy searched(window.searchPage()->findChild<QAbstractButton*>("search"),
                        &QAbstractButton::clicked);
    QTest::keyClick(window.windowHandle(), Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(searched.count() == 1 || searched.wait())
        << "a pressed button clicks a moment later";
    EXPECT_EQ(window.statusBar()->currentMessage(),
              "Fill in at least one search field or pick a keyword.");
}

} // namespace
