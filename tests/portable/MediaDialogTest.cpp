#include "portable/MediaDialog.h"

#include "session/LibraryState.h"
#include "session/Settings.h"
#include "support/TestEnvironment.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace vx;
using namespace vx::test;

namespace {

class MediaDialogTest : public ::testing::Test {
protected:
    MediaDialogTest() { dialog.show(); }

    QComboBox* mediaType() { return dialog.findChild<QComboBox*>("cmb_MediaType"); }
    QLineEdit* field(const char* name) { return dialog.findChild<QLineEdit*>(name); }
    // Size, base and number fields as "text/enabled" each.
    QString fields() {
        QStringList parts;
        for (const char* name : {"txt_Size", "txtBase", "txt_Volume"})
            parts << field(name)->text() + (field(name)->isEnabled() ? "+" : "-");
        return parts.join(' ');
    }
    void ok(const QString& size = {}, const QString& base = {}) {
        if (!size.isNull())
            field("txt_Size")->setText(size);
        if (!base.isNull())
            field("txtBase")->setText(base);
        dialog.findChild<QPushButton*>("btn_Ok")->click();
    }
    QString savedBase() { return getSetting("Settings", "strCDLabel", "(none)"); }

    TestEnvironment environment;
    MediaDialog dialog;
};

TEST_F(MediaDialogTest, EachMediumSetsItsFieldsAndTheListIsNotTyped) {
    EXPECT_TRUE(dialog.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_EQ(fields(), "650- Veltran+ 0000-");
    mediaType()->setCurrentIndex(1);
    EXPECT_EQ(fields(), "700- Veltran+ 0000-");
    field("txtBase")->setText("Mine");
    mediaType()->setCurrentIndex(2);
    EXPECT_EQ(fields(), "N/A- N/A- destDrive-");
    mediaType()->setCurrentIndex(3);
    EXPECT_EQ(fields(), "+ Veltran+ 0000-");

    // Characters are refused; the arrows choose and Tab moves on, as without a mouse.
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    mediaType()->setFocus();
    QTest::keyClick(mediaType(), Qt::Key_F);
    QTest::keyClick(mediaType(), Qt::Key_Backspace);
    EXPECT_EQ(mediaType()->currentIndex(), 3);
    QTest::keyClick(mediaType(), Qt::Key_Up);
    EXPECT_EQ(mediaType()->currentIndex(), 2);
    EXPECT_EQ(fields(), "N/A- N/A- destDrive-");
    ASSERT_TRUE(mediaType()->hasFocus());
    QTest::keyClick(mediaType(), Qt::Key_Tab);
    EXPECT_FALSE(mediaType()->hasFocus());
    QTest::keyClick(mediaType(), Qt::Key_Down);
    EXPECT_EQ(mediaType()->currentIndex(), 3);
    dialog.findChild<QCheckBox*>("chkToCD")->setChecked(true);
    EXPECT_TRUE(library().launchAuthoring);
    EXPECT_FALSE(library().exportDialogDone);

    const QString folder = QCoreApplication::applicationDirPath() + "/screenshots";
    ASSERT_TRUE(QDir().mkpath(folder));
    mediaType()->setCurrentIndex(0);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_TRUE(dialog.grab().save(folder + "/media-dialog.png"));
}

TEST_F(MediaDialogTest, SizeMustBeANumberOfAtLeastTen) {
    environment.ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    mediaType()->setCurrentIndex(3);
    ok("9");
    ok("abc");
    EXPECT_EQ(
        environment.ui().messageTexts(),
        QStringList({"Minimum Media Size is 10 MB.", "Please enter valid Media Size. (numeric)"}));
    EXPECT_EQ(environment.ui().prompts()[0].style, MessageStyle::OkOnly);
    EXPECT_FALSE(library().exportDialogDone);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(field("txt_Size")->isEnabled());
    EXPECT_EQ(savedBase(), "(none)");

    ok("10");
    EXPECT_EQ(environment.ui().prompts().size(), 2);
    EXPECT_TRUE(library().exportDialogDone);
    EXPECT_FALSE(library().exportCancelled);
    EXPECT_EQ(library().mediaSizeMB, 10);
    EXPECT_EQ(library().exportKind, "ExportToCD");
    EXPECT_TRUE(library().customSize);
    EXPECT_EQ(savedBase(), "Veltran");
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(MediaDialogTest, FolderExportTakesTheWholeSizeAndTheBaseNotApplicable) {
    mediaType()->setCurrentIndex(2);
    ok();
    EXPECT_TRUE(environment.ui().prompts().isEmpty());
    EXPECT_EQ(library().mediaSizeMB, 999999999);
    EXPECT_EQ(library().exportKind, "ExportToFolder");
    EXPECT_FALSE(library().customSize);
    EXPECT_EQ(savedBase(), "N/A");
}

TEST_F(MediaDialogTest, RefusesBasesACdLabelCannotHold) {
    for (const char* text : {"Vel tran", "Vel:tran", "   ", "a|b", "x\"y"}) {
        environment.ui().answerMessage(MessageAnswer::Ok);
        ok({}, text);
        ASSERT_TRUE(environment.ui().lastPrompt().has_value()) << text;
        EXPECT_EQ(environment.ui().lastPrompt()->text,
                  "Incorrect CD Volume label\rNot allowed \\ / : ; * ? \" < > |")
            << text;
        EXPECT_EQ(environment.ui().lastPrompt()->icon, MessageStyle::Exclamation) << text;
        EXPECT_FALSE(library().exportDialogDone) << text;
    }
    EXPECT_EQ(field("txtBase")->selectedText(), field("txtBase")->text());
    EXPECT_EQ(savedBase(), "(none)");

    ok({}, " Arch1 Longer"); // cut to 7 characters, then trimmed; a fixed size
    EXPECT_TRUE(library().exportDialogDone);
    EXPECT_EQ(savedBase(), "Arch1");
    EXPECT_EQ(library().mediaSizeMB, 650);
    EXPECT_FALSE(library().customSize);
}

TEST_F(MediaDialogTest, ALabelThatCannotBeRememberedIsSaidAndTheExportGoesOn) {
    // A file where the settings folder should be: every save fails, as on a full disk.
    const QString blocked = environment.filePath("blocked");
    QFile file(blocked);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    setSettingsDirectory(blocked + "/settings");
    environment.ui().answerMessage(MessageAnswer::Ok);
    mediaType()->setCurrentIndex(2);
    ok();
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_TRUE(environment.ui().prompts()[0].text.startsWith("The settings could not be saved"))
        << environment.ui().prompts()[0].text.toStdString();
    EXPECT_EQ(environment.ui().prompts()[0].icon, MessageStyle::Exclamation);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_TRUE(library().exportDialogDone);
    EXPECT_FALSE(library().exportCancelled);
}

TEST_F(MediaDialogTest, CancelOrClosingCancelsTheExport) {
    mediaType()->setCurrentIndex(2);
    dialog.findChild<QPushButton*>("btn_Cancel")->click();
    EXPECT_TRUE(library().exportCancelled);
    EXPECT_TRUE(library().exportDialogDone);
    EXPECT_EQ(library().exportKind, "ExportToFolder");
    EXPECT_EQ(savedBase(), "(none)");

    resetLibraryState();
    MediaDialog second;
    second.show();
    second.close();
    EXPECT_TRUE(library().exportCancelled);
    EXPECT_TRUE(library().exportDialogDone);
    EXPECT_EQ(library().exportKind, "ExportToCD");
}

} // namespace
