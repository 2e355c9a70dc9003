#include "core/SampleContent.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "pickers/VXDocSec.h"
#include "pickers/VXKeywords.h"
#include "session/GroupConnection.h"
#include "session/PromptText.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace vx;

namespace {

QStringList texts(const QListWidget* list) {
    QStringList items;
    for (int row = 0; row < list->count(); ++row)
        items << list->item(row)->text();
    return items;
}

void execute(const test::SampleRepository& sample, const QString& sql) {
    Connection connection;
    connection.open(sample.connectionText());
    connection.execute(sql);
}

class KeywordPickerTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;
    VXKeywords keywords;
    QListWidget* dictionary = keywords.findChild<QListWidget*>("Dictionary");
    QListWidget* picked = keywords.findChild<QListWidget*>("Keywords");

    void SetUp() override {
        ASSERT_NE(dictionary, nullptr);
        ASSERT_NE(picked, nullptr);
    }
    void click(const char* button) { keywords.findChild<QPushButton*>(button)->click(); }
    void select(QListWidget* list, const QString& text) {
        list->setCurrentItem(list->findItems(text, Qt::MatchExactly).value(0));
    }
    void doubleClick(QListWidget* list, int row) {
        const QPoint at = list->visualItemRect(list->item(row)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
    }
};

} // namespace

TEST_F(KeywordPickerTest, AddPicksTheSelectedWordOnceIgnoringCase) {
    keywords.setInit(sample.initFilePath());
    QStringList words = repo::sample::dictionaryWords();
    words.sort();
    ASSERT_EQ(texts(dictionary), words);

    dictionary->setCurrentRow(-1);
    click("Command1");
    EXPECT_EQ(picked->count(), 0) << "nothing selected, nothing picked";
    EXPECT_FALSE(keywords.isEof()) << "but the cursor is no longer at EOF";

    select(dictionary, "invoice");
    click("Command1");
    EXPECT_EQ(texts(picked), QStringList({"invoice"}));
    EXPECT_EQ(dictionary->currentItem()->text(), words[words.indexOf("invoice") + 1]);

    keywords.AddListItem(QStringLiteral("URGENT"));
    select(dictionary, "urgent");
    click("Command1");
    EXPECT_EQ(texts(picked), QStringList({"invoice", "URGENT"}));
    EXPECT_EQ(dictionary->currentItem()->text(), "urgent");

    dictionary->setCurrentRow(dictionary->count() - 1);
    click("Command1");
    EXPECT_EQ(picked->count(), 3);
    EXPECT_EQ(dictionary->currentRow(), dictionary->count() - 1) << "no next word to move to";
}

TEST_F(KeywordPickerTest, RemoveSelectsTheLastRemainingItemOrEndsAtEof) {
    for (const char* word : {"alpha", "beta", "gamma"})
        keywords.AddListItem(QString::fromLatin1(word));
    picked->setCurrentRow(-1);
    click("Command2");
    EXPECT_EQ(picked->count(), 3) << "nothing selected, nothing removed";

    select(picked, "alpha");
    click("Command2");
    EXPECT_EQ(texts(picked), QStringList({"beta", "gamma"}));
    EXPECT_EQ(picked->currentRow(), 1);
    click("Command2");
    click("Command2");
    EXPECT_EQ(picked->count(), 0);
    EXPECT_TRUE(keywords.isEof());

    // Double clicks do the same as the buttons.
    keywords.setInit(sample.initFilePath());
    keywords.resize(420, 260);
    keywords.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&keywords));
    QApplication::processEvents(); // list views lay out their items late
    doubleClick(dictionary, 0);
    doubleClick(dictionary, 2);
    EXPECT_EQ(texts(picked),
              QStringList({dictionary->item(0)->text(), dictionary->item(2)->text()}));
    doubleClick(picked, 0);
    EXPECT_EQ(texts(picked), QStringList({dictionary->item(2)->text()}));
}

TEST_F(KeywordPickerTest, InitFailureShowsTheDescriptionAndKeepsTheWordsRead) {
    const QString noDataLink =
        environment.writeFile("other.ini", "[options]\r\nGroup=somewhere.udl\r\n");
    QString expected;
    try {
        openGroupConnection(noDataLink);
    } catch (const Error& error) {
        expected = error.description();
    }
    ASSERT_FALSE(expected.isEmpty());
    environment.ui().answerMessage(MessageAnswer::Ok);
    keywords.setInit(noDataLink);
    EXPECT_EQ(test::promptTexts(environment.ui()),
              QStringList{test::promptText("", expected, MessageStyle::OkOnly)})
        << "no icon, no title";

    // The database opens but the query fails: the words loaded earlier stay.
    keywords.setInit(sample.initFilePath());
    const QStringList loaded = texts(dictionary);
    execute(sample, "DROP TABLE dictionary");
    environment.ui().answerMessage(MessageAnswer::Ok);
    keywords.setInit(sample.initFilePath());
    ASSERT_EQ(environment.ui().prompts().size(), 2);
    EXPECT_TRUE(environment.ui().prompts()[1].text.contains("dictionary"));
    EXPECT_EQ(texts(dictionary), loaded);
    keywords.Done();
    keywords.Done();
    EXPECT_EQ(environment.ui().prompts().size(), 2) << "Done is always quiet";
}

TEST(UserPicker, ListsUsersInTheDatabasesOrderOfUserName) {
    test::TestEnvironment environment;
    test::SampleRepository sample;
    execute(sample, "INSERT INTO KTUsers (UserID, UserName) VALUES (20, 'zoe')");
    execute(sample, "INSERT INTO KTUsers (UserID, UserName) VALUES (21, 'abe')");
    VXDocSec users;
    users.setInit(sample.initFilePath());
    const auto* list = users.findChild<QListWidget*>("lstUsers");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(texts(list), QStringList({"abe", "admin", "alice", "bob", "carol", "dave", "zoe"}));
}
