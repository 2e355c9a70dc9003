#include "companions/DefaultCompanions.h"
#include "operations/DocumentOperations.h"
#include "operations/DocumentProperty.h"
#include "operations/Progressbar.h"
#include "support/FakeHitListContext.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QWidget>
#include <gtest/gtest.h>

namespace vx::test {
namespace {

// The marking and properties operations driven through a stand-in hit list on the sample.
class OperationTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { registerDefaultCompanions(); }
    void SetUp() override {
        QLocale::setDefault(QLocale::c());
        previousHook = DocumentProperty::setShowHook([this](DocumentProperty& form) {
            shownForm << form.windowTitle() << form.findChild<QLabel*>("TotalCount1")->text()
                      << form.findChild<QLabel*>("TotalSize1")->text();
        });
    }
    void TearDown() override { DocumentProperty::setShowHook(std::move(previousHook)); }

    TestEnvironment environment;
    SampleRepository sample;
    FakeHitListContext hitList{sample};
    DocumentProperty::ShowHook previousHook;
    QStringList shownForm; // title, count and size of each form shown

    ScriptedUiServices& ui() const { return environment.ui(); }
    QStringList column(const QString& sql) {
        Recordset rows;
        rows.open(sql, hitList.connection());
        QStringList values;
        for (; !rows.eof(); rows.moveNext())
            values << rows.value(0).toString();
        return values;
    }
    QString bigFile(const QString& name, qint64 bytes) const { // sparse: takes no room
        QFile file(environment.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(bytes));
        return file.fileName();
    }
};

TEST_F(OperationTest, MarkingNeedsTheRightAndAYesThenLeavesTheDocumentsOutOfTheNextQuery) {
    const QString marked = "SELECT itemid FROM ktitem WHERE deleted = -1 AND itemid < 6";
    hitList.connection().execute("DELETE FROM ktitem WHERE itemid = 4");
    hitList.selection = {3, 4, 2};
    hitList.permission = 31;
    ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::No);
    EXPECT_FALSE(markForDeletion(hitList));
    hitList.permission = 32;
    EXPECT_FALSE(markForDeletion(hitList));
    ASSERT_EQ(ui().prompts().size(), 2);
    EXPECT_EQ(ui().prompts()[0].text, "You do not have Editing and Deleting rights.");
    EXPECT_EQ(ui().prompts()[0].title, "Permission Denied");
    EXPECT_EQ(ui().prompts()[0].style, MessageStyle::OkOnly | MessageStyle::Exclamation);
    EXPECT_EQ(ui().prompts()[1].text, "Are you sure you want to delete the selected documents?. "
                                      "They will no longer be available.");
    EXPECT_EQ(ui().prompts()[1].title, "Warning");
    EXPECT_EQ(ui().prompts()[1].style, MessageStyle::YesNo);
    EXPECT_TRUE(column(marked).isEmpty());
    EXPECT_TRUE(hitList.audits.isEmpty());

    ui().answerMessage(MessageAnswer::Yes);
    EXPECT_TRUE(markForDeletion(hitList));
    EXPECT_EQ(ui().prompts().size(), 3); // the missing item 4 is passed over silently
    EXPECT_EQ(column(marked + " ORDER BY itemid"), (QStringList{"2", "3"}));
    EXPECT_EQ(column(sampleResultQuery("Invoices.itemid < 6")), (QStringList{"1", "5"}));
    ASSERT_EQ(hitList.audits.size(), 1);
    EXPECT_EQ(hitList.audits[0].action + hitList.audits[0].description,
              "DeletingMarking records for deletion");
    EXPECT_EQ(hitList.audits[0].itemIds, (QList<qint32>{3, 4, 2}));
}

TEST_F(OperationTest, PropertiesCountEveryDocumentAndAddTheReachableFiles) {
    const auto sizeOf = [&](int slot) {
        return QFileInfo(sample.documentFolder() +
                         QString("/inv%1.txt").arg(slot, 7, 10, QChar('0')))
            .size();
    };
    hitList.selection = {1, 2, 3};
    const auto host = hitList.locate;
    QList<int> positions;
    hitList.locate = [&](qint32 itemId, const QString& file, const QString& volume) {
        positions << (Progressbar::current()->isVisible() ? Progressbar::current()->value() : -1);
        return itemId == 2 ? QStringLiteral("ERROR") : host(itemId, file, volume);
    };
    EXPECT_TRUE(propertyDocuments(hitList));

    EXPECT_EQ(shownForm, (QStringList{"Documents Property", "3 documents selected.",
                                      QString::number(sizeOf(1) + sizeOf(3)) +
                                          " number of bytes selected(. MB)"}));
    EXPECT_EQ(positions, (QList<int>{1, 2, 3}));
    EXPECT_FALSE(Progressbar::current()->isVisible());
    EXPECT_EQ(hitList.events.last(), "CurrentItemID");
}

TEST_F(OperationTest, PropertiesShowMegabytesAndOverflowBeyondThirtyTwoBits) {
    const QString half = bigFile("half.bin", 2'500'000);
    const QString largest = bigFile("largest.bin", 2'147'483'647);
    hitList.selection = {1};
    hitList.locate = [&](qint32, const QString&, const QString&) { return half; };
    EXPECT_TRUE(propertyDocuments(hitList));
    hitList.locate = [&](qint32, const QString&, const QString&) { return largest; };
    EXPECT_TRUE(propertyDocuments(hitList));
    EXPECT_EQ(shownForm.filter("bytes"),
              (QStringList{"2500000 number of bytes selected(2.5 MB)",
                           "2147483647 number of bytes selected(2147.48 MB)"}));

    hitList.selection = {1, 2}; // one byte more than fits
    hitList.locate = [&](qint32 itemId, const QString&, const QString&) {
        return itemId == 1 ? largest : bigFile("one.bin", 1);
    };
    ui().answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(propertyDocuments(hitList));
    ASSERT_EQ(ui().prompts().size(), 1);
    EXPECT_EQ(ui().prompts()[0].text, "Overflow");
    EXPECT_EQ(ui().prompts()[0].style, MessageStyle::OkOnly | MessageStyle::Critical);
    EXPECT_EQ(shownForm.size(), 6); // no third form
    EXPECT_FALSE(Progressbar::current()->isVisible());
}

TEST(MegabytesText, FollowsTheOptionalDigitFormat) {
    QLocale::setDefault(QLocale::c());
    const std::pair<qint64, const char*> cases[] = {
        {2'500'000, "2.5"}, {3'000'000, "3."},   {500'000, ".5"},   {0, "."},
        {4'999, "."},       {2'675'000, "2.68"}, {4'995'000, "5."}, {12'340'000, "12.34"}};
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(megabytesText(bytes), QString::fromLatin1(text)) << bytes;
}

TEST(ProgressScope, MoreStepsThanTheFormTakesAreScaledIntoItsRange) {
    QWidget owner;
    struct Case {
        qsizetype steps, reached;
        qint16 maximum, value;
    };
    const Case cases[] = {
        {3, 2, 3, 2},
        {32767, 32767, 32767, 32767},
        {300000, 75000, 32767, 8191},
        {300000, 300000, 32767, 32767},
    };
    for (const Case& c : cases) {
        ProgressScope progress(&owner, c.steps);
        progress.setValue(c.reached);
        EXPECT_EQ(Progressbar::current()->maximum(), c.maximum) << c.steps;
        EXPECT_EQ(Progressbar::current()->value(), c.value) << c.reached << " of " << c.steps;
    }
}

} // namespace
} // namespace vx::test
