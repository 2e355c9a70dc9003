#include "FileOpsFixture.h"
#include "operations/CopyMoveDialog.h"
#include "operations/DocumentOperations.h"
#include "session/LibraryState.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace vx::test {
namespace {

using CopyMoveCommandTest = FileOpsFixture;

QPushButton* button(QWidget& dialog, const char* name) {
    return dialog.findChild<QPushButton*>(QString::fromLatin1(name));
}

TEST_F(CopyMoveCommandTest, DialogIsTopmostFocusesCancelAndAnswersThroughTheSharedChoice) {
    CopyMoveDialog dialog;
    EXPECT_EQ(dialog.objectName(), QStringLiteral("frmCopyMove"));
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Copy/Move Documents"));
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    ASSERT_NE(dialog.findChild<QLabel*>(QStringLiteral("Label1")), nullptr);
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("Label1"))->text(),
              QStringLiteral("Copy or Move selected documents ?"));
    QStringList captions;
    for (const char* name : {"btnCopy", "btnMove", "btnCancel"})
        captions << (button(dialog, name) ? button(dialog, name)->text() : QString());
    EXPECT_EQ(captions, QStringList({QStringLiteral("&Copy"), QStringLiteral("&Move"),
                                     QStringLiteral("C&ancel")}));

    dialog.show();
    EXPECT_EQ(dialog.focusWidget(), button(dialog, "btnCancel"));
    QTest::mouseClick(button(dialog, "btnMove"), Qt::LeftButton);
    EXPECT_EQ(library().copyMoveChoice, QStringLiteral("move"));
    EXPECT_FALSE(dialog.isVisible());
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(library().copyMoveChoice, QStringLiteral("cancel"));
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(CopyMoveCommandTest, MoveCommandWaitsForTheAnswerThenRunsTheChosenOperation) {
    const QString target = makeFolder(QStringLiteral("copies"));
    hitList.selection = {1, 2};
    int waits = 0;
    QString choiceWhileWaiting;
    const auto clickAfterWaits = [&](const char* name, int count) {
        waits = 0;
        ui().onProcessEvents([&, name, count] {
            auto* dialog = hitList.controlWidget()->findChild<CopyMoveDialog*>();
            if (!dialog || !dialog->isVisible())
                return;
            choiceWhileWaiting = library().copyMoveChoice;
            if (++waits == count)
                QTest::mouseClick(button(*dialog, name), Qt::LeftButton);
        });
    };

    clickAfterWaits("btnCopy", 3);
    ui().answerFolder(target);
    chooseCopyOrMove(hitList);
    EXPECT_EQ(waits, 3);
    EXPECT_EQ(choiceWhileWaiting, QStringLiteral("N/A"));
    EXPECT_EQ(QDir(target).entryList(QDir::Files), QStringList({mainFileName(1), mainFileName(2)}));
    ASSERT_EQ(hitList.audits.size(), 1);
    EXPECT_EQ(hitList.audits[0].action, QStringLiteral("Copying"));
    EXPECT_EQ(hitList.controlWidget()->findChild<CopyMoveDialog*>(), nullptr); // unloaded

    // Move reaches the move operation (refused here for lack of rights); Cancel runs nothing.
    hitList.permission = 8;
    clickAfterWaits("btnMove", 1);
    ui().answerMessage(MessageAnswer::Ok);
    chooseCopyOrMove(hitList);
    clickAfterWaits("btnCancel", 1);
    chooseCopyOrMove(hitList);
    EXPECT_EQ(library().copyMoveChoice, QStringLiteral("cancel"));
    EXPECT_EQ(ui().messageTexts(),
              QStringList{QStringLiteral("You do not have Editing and Deleting rights.")});
    EXPECT_EQ(ui().prompts().size(), 2); // the copy's folder and the refusal
    EXPECT_EQ(hitList.controlWidget()->findChild<CopyMoveDialog*>(), nullptr);
}

} // namespace
} // namespace vx::test
