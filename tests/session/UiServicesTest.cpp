#include "session/QtUiServices.h"
#include "session/SystemFolder.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <QFontMetrics>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

using namespace vx;

// The scripted UI every suite relies on must fail a test on a prompt nobody expected.
TEST(ScriptedUiServices, FlagsUnexpectedPromptsAndAnswersThemNeutrally) {
    UiServices* outer = nullptr;
    {
        test::TestEnvironment env;
        outer = &ui();
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
        {
            test::TestEnvironment inner;
            EXPECT_EQ(systemFolder(), inner.systemFolder());
        }
        EXPECT_EQ(&ui(), outer) << "an environment puts back what it replaced";
        EXPECT_EQ(systemFolder(), env.systemFolder());
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

TEST(QtUiServices, MessageBoxIsWideEnoughForItsTitle) {
    QtUiServices services;
    struct Case {
        QString title;
        QString text;
    };
    const Case cases[] = {{"Search Result", "0"},
                          {"Export To Veltrane - Failed to create tables", "No."},
                          {"T", "A text much longer than its title, which sizes the box itself."}};
    for (const Case& c : cases) {
        int width = 0;
        QTimer::singleShot(0, [&] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                width = box->width();
                box->button(QMessageBox::Ok)->click();
            }
        });
        services.messageBox(c.text, MessageStyle::OkOnly, c.title);
        const QFontMetrics metrics(QApplication::font("QMdiSubWindowTitleBar"));
        EXPECT_GE(width, metrics.horizontalAdvance(c.title) + 100) << c.title.toStdString();
        EXPECT_GE(width, QFontMetrics(QApplication::font()).horizontalAdvance(c.text))
            << c.text.toStdString();
    }
}
