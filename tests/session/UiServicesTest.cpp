#include "session/QtUiServices.h"
#include "session/SystemFolder.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

using namespace vx;

TEST(ScriptedUiServices, AnswersInOrderAndFlagsUnexpectedPrompts) {
    test::TestEnvironment env;
    env.ui().answerMessage(MessageAnswer::Yes).answerInput("Monthly").cancelInput();
    EXPECT_EQ(ui().messageBox("Save?", MessageStyle::YesNo | MessageStyle::Question, "Save"),
              MessageAnswer::Yes);
    EXPECT_EQ(ui().inputBox("Name", "Save Query", "q1"), QString("Monthly"));
    EXPECT_EQ(ui().inputBox("Name", "Save Query", "q1"), std::nullopt);
    ASSERT_EQ(env.ui().prompts().size(), 3);
    EXPECT_EQ(env.ui().prompts()[0].icon, MessageStyle::Question);
    EXPECT_EQ(env.ui().prompts()[0].buttons, MessageStyle::YesNo);
    EXPECT_EQ(env.ui().prompts()[1].defaultText, "q1");

    MessageAnswer neutral = MessageAnswer::Yes;
    EXPECT_NONFATAL_FAILURE(neutral = ui().messageBox("Delete all?", MessageStyle::YesNo, ""),
                            "Delete all?");
    EXPECT_EQ(neutral, MessageAnswer::No);
    env.ui().answerFolder("/tmp");
    std::optional<QString> text = QString("x");
    EXPECT_NONFATAL_FAILURE(text = ui().inputBox("Label", "", ""), "folder browser");
    EXPECT_EQ(text, std::nullopt);
    EXPECT_EQ(ui().browseForFolder(nullptr, "Destination"), "/tmp")
        << "a mismatch keeps the answer";

    ui().sleep(500);
    EXPECT_EQ(env.ui().sleeps(), QList<int>{500});
}

TEST(TestEnvironment, PutsEverythingBack) {
    UiServices* outer = nullptr;
    {
        test::TestEnvironment first;
        outer = &ui();
        EXPECT_EQ(outer, &first.ui());
        {
            test::TestEnvironment second;
            EXPECT_EQ(&ui(), &second.ui());
            EXPECT_EQ(systemFolder(), second.systemFolder());
        }
        EXPECT_EQ(&ui(), outer);
        EXPECT_EQ(systemFolder(), first.systemFolder());
    }
    EXPECT_NE(dynamic_cast<QtUiServices*>(&ui()), nullptr);
}

TEST(QtUiServices, MessageBoxShowsTheStyleAndReturnsTheChosenButton) {
    QtUiServices services;
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString defaultText;
    int buttonCount = 0;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        title = box->windowTitle();
        icon = box->icon();
        buttonCount = int(box->buttons().size());
        defaultText = box->defaultButton() ? box->defaultButton()->text() : QString();
        box->button(QMessageBox::No)->click();
    });
    const MessageAnswer answer = services.messageBox(
        "Replace all?",
        MessageStyle::YesNoCancel | MessageStyle::Exclamation | MessageStyle::DefaultButton2, "");
    EXPECT_EQ(answer, MessageAnswer::No);
    EXPECT_EQ(title, "VXUILib");
    EXPECT_EQ(icon, QMessageBox::Warning);
    EXPECT_EQ(buttonCount, 3);
    EXPECT_EQ(defaultText.remove('&'), "No");

    QTimer::singleShot(0, [] {
        if (auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget())) {
            dialog->setTextValue("typed");
            dialog->accept();
        }
    });
    EXPECT_EQ(services.inputBox("Name", "Title", "default"), QString("typed"));
    EXPECT_FALSE(services.shellExecute("open", "/no/such/file"));
}
