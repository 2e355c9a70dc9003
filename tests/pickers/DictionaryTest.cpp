#include "core/SampleContent.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "pickers/VXDictionary.h"
#include "server/LateBinding.h"
#include "session/PromptText.h"
#include "session/UiServices.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTableView>
#include <QTest>
#include <gtest/gtest.h>

using namespace vx;

namespace {

class DictionaryTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;
    VXDictionary dictionary;
    QTableView* grid = dictionary.findChild<QTableView*>("grdDataGrid");

    void SetUp() override {
        ASSERT_NE(grid, nullptr);
        dictionary.resize(300, 400);
        dictionary.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dictionary));
    }

    // The words in the table, in the grid's order.
    QStringList tableWords() {
        Connection connection;
        connection.open(sample.connectionText());
        Recordset rows;
        rows.open("SELECT * FROM dictionary ORDER BY words", connection);
        QStringList words;
        for (; !rows.eof(); rows.moveNext())
            words << rows.value("words").toString();
        return words;
    }

    QString cell(int row) const { return grid->model()->index(row, 0).data().toString(); }
    int rows() const { return grid->model()->rowCount(); }

    // Types into the cell's editor and ends the edit with a key, as a user does.
    void typeInto(int row, const QString& text, Qt::Key endKey = Qt::Key_Return) {
        const QModelIndex index = grid->model()->index(row, 0);
        grid->setCurrentIndex(index);
        grid->edit(index);
        auto* editor = qobject_cast<QLineEdit*>(grid->indexWidget(index));
        ASSERT_NE(editor, nullptr);
        editor->selectAll();
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, endKey);
        QApplication::processEvents(); // the delegate commits on a queued call
    }

    void pressDeleteOn(int row) {
        grid->setCurrentIndex(grid->model()->index(row, 0));
        QTest::keyClick(grid, Qt::Key_Delete);
    }
};

const QStringList sortedSampleWords() {
    QStringList words = repo::sample::dictionaryWords();
    words.sort();
    return words;
}

} // namespace

TEST_F(DictionaryTest, EditsAndNewWordsReachTheTable) {
    dictionary.setInit(sample.initFilePath());
    EXPECT_EQ(grid->geometry(), dictionary.rect());
    dictionary.activateWindow();
    dictionary.setFocus();
    EXPECT_EQ(QApplication::focusWidget(), grid) << "the control hands its focus to the grid";
    grid->setCurrentIndex(grid->model()->index(0, 0));
    QTest::keyClick(grid, Qt::Key_Return);
    QTest::keyClick(grid, Qt::Key_Enter);
    EXPECT_EQ(grid->currentIndex().row(), 2);
    EXPECT_EQ(grid->indexWidget(grid->currentIndex()), nullptr) << "Enter does not start an edit";

    const int count = rows();
    ASSERT_EQ(count, sortedSampleWords().size() + 1) << "the words and an empty row for a new one";
    EXPECT_EQ(grid->model()->headerData(count - 1, Qt::Vertical).toString(), "*");

    typeInto(0, "agreed");
    EXPECT_EQ(cell(0), "agreed");
    EXPECT_EQ(grid->currentIndex().row(), 1) << "Enter ends the edit and moves down";
    QStringList expected = sortedSampleWords();
    expected[0] = QStringLiteral("agreed");
    expected.sort();
    EXPECT_EQ(tableWords(), expected);

    typeInto(count - 1, "zeal");
    ASSERT_EQ(rows(), count + 1) << "the new word's row, then a fresh empty one";
    EXPECT_EQ(cell(count - 1), "zeal");
    EXPECT_EQ(cell(count), "");
    EXPECT_EQ(grid->currentIndex().row(), count) << "ready for the next new word";
    expected << QStringLiteral("zeal");
    EXPECT_EQ(tableWords(), expected);

    // Leaving the new row's editor empty, or with Escape, adds nothing.
    typeInto(count, "");
    typeInto(count, "discarded", Qt::Key_Escape);
    EXPECT_EQ(rows(), count + 1);
    EXPECT_EQ(tableWords(), expected);

    // A word too long for the column is refused with a message; the table keeps its word.
    environment.ui().answerMessage(MessageAnswer::Ok);
    typeInto(1, QString(60, u'x'));
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_FALSE(environment.ui().prompts()[0].text.isEmpty());
    EXPECT_EQ(cell(1), expected[1]);
    EXPECT_EQ(tableWords(), expected);
}

TEST_F(DictionaryTest, DeleteAsksAndOnlyYesRemovesTheRow) {
    dictionary.setInit(sample.initFilePath());
    const QStringList words = sortedSampleWords();
    const int count = rows();

    environment.ui().answerMessage(MessageAnswer::No);
    pressDeleteOn(1);
    EXPECT_EQ(test::promptTexts(environment.ui()),
              QStringList{test::promptText("", "Delete Current Row?",
                                           MessageStyle::YesNo | MessageStyle::Question)});
    EXPECT_EQ(rows(), count);
    EXPECT_EQ(cell(1), words[1]);
    EXPECT_EQ(tableWords(), words);

    environment.ui().answerMessage(MessageAnswer::Yes);
    pressDeleteOn(1);
    EXPECT_EQ(rows(), count - 1);
    EXPECT_EQ(cell(1), words[2]);
    QStringList remaining = words;
    remaining.removeAt(1);
    EXPECT_EQ(tableWords(), remaining);

    // The empty new row has nothing to delete and asks nothing.
    pressDeleteOn(rows() - 1);
    EXPECT_EQ(environment.ui().prompts().size(), 2);

    // Without the keyboard: the right button's menu deletes the row under the mouse, once asked.
    grid->setCurrentIndex(grid->model()->index(3, 0));
    const QPoint cellCentre = grid->visualRect(grid->model()->index(0, 0)).center();
    QContextMenuEvent rightClick(QContextMenuEvent::Mouse, cellCentre,
                                 grid->viewport()->mapToGlobal(cellCentre));
    QApplication::sendEvent(grid->viewport(), &rightClick);
    auto* menu = grid->findChild<QMenu*>("rowMenu");
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible());
    menu->hide();
    environment.ui().answerMessage(MessageAnswer::Yes);
    menu->actions().first()->trigger();
    EXPECT_EQ(environment.ui().prompts().size(), 3);
    remaining.removeAt(0);
    EXPECT_EQ(tableWords(), remaining);
}

TEST_F(DictionaryTest, InitFailureLeavesTheGridUnboundAndDoneIsAlwaysQuiet) {
    dictionary.Done(); // before any Init
    environment.ui().answerMessage(MessageAnswer::Ok);
    writeMember(&dictionary, "Init", environment.filePath("absent.ini"));
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_FALSE(environment.ui().prompts()[0].text.isEmpty());
    EXPECT_EQ(environment.ui().prompts()[0].style, MessageStyle::OkOnly);
    EXPECT_EQ(environment.ui().prompts()[0].title, "");
    EXPECT_EQ(rows(), 0);

    writeMember(&dictionary, "Init", sample.initFilePath());
    EXPECT_GT(rows(), 0);
    callMember(&dictionary, "Done");
    callMember(&dictionary, "Done");
    EXPECT_EQ(rows(), 0);
    EXPECT_EQ(environment.ui().prompts().size(), 1);
}
