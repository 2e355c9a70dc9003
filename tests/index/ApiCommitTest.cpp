#include "IndexFixture.h"
#include "session/UiServices.h"

#include <QDate>

using namespace vx;
using namespace vx::test;

namespace {

class ApiCommitTest : public IndexFixture {
protected:
    void SetUp() override {
        startUp();
        index->setDocumentPath(QStringLiteral("/docs/scan.pdf"));
        index->setRemoteIndex(true);
        spies.answers().documentIndex = 77;
        spies.clearCalls();
    }

    // A form filled the way a user leaves it: some fields set, the check box untouched.
    void fillForm() {
        field("InvoiceNo").value = QStringLiteral("  INV-1  ");
        field("Customer").value = QStringLiteral("Acme");
        field("Status").value = QString(); // an empty text is not handed over
        field("Amount").value = 250;
        field("InvoiceDate").value = QDate(2024, 5, 17);
        field("Categories").entries = QStringList{"a", "b", "c"};
        field("Notes").value = QStringLiteral("note");
    }
};

TEST_F(ApiCommitTest, HandsEveryValueUsersKeywordsAndSecurityInOrder) {
    fillForm();
    index->setUserIds({QStringLiteral("3"), 5});
    pickKeyword(QStringLiteral("invoice"));
    pickKeyword(QStringLiteral("urgent"));

    EXPECT_TRUE(index->UpdateRecordAPI());
    EXPECT_EQ(index->curItemId(), 77);
    const QStringList expected = {"VXScanIndex.Init(Main)",
                                  "VXScanIndex.RemoteIndex = True",
                                  "VXScanIndex.SelectGroup(Invoices)",
                                  "VXScanIndex.SetFieldContent(InvoiceNo, INV-1)",
                                  "VXScanIndex.SetFieldContent(Customer, Acme)",
                                  "VXScanIndex.SetFieldContent(Amount, 250)",
                                  "VXScanIndex.SetFieldContent(InvoiceDate, 2024-05-17)",
                                  "VXScanIndex.SetFieldContent(Paid, 0)",
                                  "VXScanIndex.SetFieldContent(Categories, a;b;c)",
                                  "VXScanIndex.SetFieldContent(Notes, note)",
                                  "VXItemList.ClearList()",
                                  "VXItemList.AddItem(3)",
                                  "VXItemList.AddItem(5)",
                                  "VXScanIndex.ExcludeUserIDList = VXItemList(3, 5)",
                                  "VXItemList.ClearList()",
                                  "VXItemList.AddItem(invoice)",
                                  "VXItemList.AddItem(urgent)",
                                  "VXScanIndex.KeywordsList = VXItemList(invoice, urgent)",
                                  "VXScanIndex.DocumentIndex(/docs/scan.pdf, index1, alice)",
                                  "VXSecurity.Init = " + sample.initFilePath(),
                                  "VXSecurity.SelectItem(77)",
                                  "VXSecurity.DeleteItemSecurity()",
                                  "VXSecurity.AddItemSecurity(3, 77)",
                                  "VXSecurity.AddItemSecurity(5, 77)",
                                  "VXSecurity.KillItem()",
                                  "VXSecurity.Done()"};
    EXPECT_EQ(companionCalls(), expected);

    // The untouched check box goes as a 16-bit zero, not as text or Boolean.
    const auto& contents = spies.lastScanIndex()->fieldContents();
    const auto paid = std::find_if(contents.begin(), contents.end(),
                                   [](const auto& entry) { return entry.first == "Paid"; });
    ASSERT_NE(paid, contents.end());
    EXPECT_EQ(paid->second.typeId(), QMetaType::Short);
    EXPECT_EQ(paid->second.toInt(), 0);
}

TEST_F(ApiCommitTest, TextsAreCutThenTrimmedAndEmptyValuesAreLeftOut) {
    // 3 blanks + 63990 letters + 20 more: the cut keeps 7 of the 20, the trim drops the blanks.
    field("Notes").value = QString(3, ' ') + QString(63990, 'n') + QString(20, 'z');
    field("InvoiceNo").value = QStringLiteral("    ");
    field("Paid").value = true;

    ASSERT_TRUE(index->UpdateRecordAPI());
    QStringList columns;
    QVariant notes;
    for (const auto& [column, value] : spies.lastScanIndex()->fieldContents()) {
        columns << column;
        if (column == "Notes")
            notes = value;
    }
    EXPECT_EQ(columns, (QStringList{"Paid", "Notes"}));
    EXPECT_EQ(notes.toString(), QString(63990, 'n') + QString(7, 'z'));
    EXPECT_EQ(spies.callsStartingWith("VXScanIndex.SetFieldContent(Paid").value(0),
              "VXScanIndex.SetFieldContent(Paid, True)");
}

TEST_F(ApiCommitTest, UserIdsAreReadUpToTheEmptyMarker) {
    // Straight after Init the collection is the single marker: nothing is handed over.
    ASSERT_TRUE(index->UpdateRecordAPI());
    for (const char* call : {"VXItemList.AddItem", "VXScanIndex.ExcludeUserIDList",
                             "VXScanIndex.KeywordsList", "VXSecurity.AddItemSecurity"})
        EXPECT_TRUE(spies.callsStartingWith(call).isEmpty()) << call;
    EXPECT_EQ(spies.callsStartingWith("VXSecurity.DeleteItemSecurity").size(), 1);

    spies.clearCalls();
    index->setUserIds({QStringLiteral("3"), QStringLiteral("empty"), QStringLiteral("5")});
    ASSERT_TRUE(index->UpdateRecordAPI());
    EXPECT_EQ(spies.callsStartingWith("VXItemList.AddItem"), QStringList{"VXItemList.AddItem(3)"});
    EXPECT_TRUE(spies.callsStartingWith("VXScanIndex.ExcludeUserIDList").isEmpty());
    EXPECT_EQ(spies.callsStartingWith("VXSecurity.AddItemSecurity"),
              QStringList{"VXSecurity.AddItemSecurity(3, 77)"});

    // A collection the host emptied still hands over its (empty) list.
    spies.clearCalls();
    index->setUserIds({});
    ASSERT_TRUE(index->UpdateRecordAPI());
    EXPECT_EQ(spies.callsStartingWith("VXScanIndex.ExcludeUserIDList"),
              QStringList{"VXScanIndex.ExcludeUserIDList = VXItemList()"});
}

TEST_F(ApiCommitTest, ResultAndItemIdFollowTheApisAnswer) {
    index->setCurItemId(12);
    spies.answers().documentIndex = 0;
    EXPECT_FALSE(index->UpdateRecordAPI());
    EXPECT_EQ(index->curItemId(), 0);

    // A group the API refuses: the message names the step, nothing is staged.
    spies.clearCalls();
    spies.answers().selectGroup = false;
    environment.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(index->UpdateRecordAPI());
    EXPECT_EQ(promptTexts(environment.ui()),
              (QStringList{promptText("UpdateRecordAPI", "Error: \rxAPI.SelectGroup(Invoices)",
                                      MessageStyle::OkOnly | MessageStyle::Critical)}));
    EXPECT_TRUE(spies.callsStartingWith("VXScanIndex.SetFieldContent").isEmpty());

    // An invalid form: nothing is written and nothing is said.
    spies.clearCalls();
    environment.ui().clearPrompts();
    spies.answers().fieldsValid = false;
    EXPECT_FALSE(index->UpdateRecordAPI());
    EXPECT_TRUE(companionCalls().isEmpty());
}

TEST_F(ApiCommitTest, FailuresNameTheLastStepAndSecurityFailuresArePassedOver) {
    fillForm();
    spies.answers().failures.insert("VXScanIndex.SetFieldContent", "Disk is full");
    environment.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(index->UpdateRecordAPI());
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().prompts().first().text,
              "Error: Disk is full\rxAPI.SetFieldContent InvoiceNo,INV-1");
    EXPECT_EQ(environment.ui().prompts().first().title, "UpdateRecordAPI");

    // Security: a refused user is reported and the rest still run; a throwing KillItem is ignored.
    spies.answers().failures.clear();
    spies.answers().failures.insert("VXSecurity.KillItem", "locked");
    spies.answers().failingSecurityUsers = {5};
    index->setUserIds({QStringLiteral("5"), QStringLiteral("3")});
    environment.ui().clearPrompts();
    spies.clearCalls();
    environment.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(index->UpdateRecordAPI());
    EXPECT_EQ(
        promptTexts(environment.ui()),
        (QStringList{promptText("", "Error updating Document Security for\rUserID: 5 ItemId: 77",
                                MessageStyle::OkOnly | MessageStyle::Critical)}));
    EXPECT_EQ(spies.callsStartingWith("VXSecurity.").mid(3),
              (QStringList{"VXSecurity.AddItemSecurity(5, 77)", "VXSecurity.AddItemSecurity(3, 77)",
                           "VXSecurity.KillItem()", "VXSecurity.Done()"}));
}

TEST_F(ApiCommitTest, BeforeGroupNameTheFirstTabCaptionNamesTheGroup) {
    createIndex();
    index->setInit(sample.initFilePath());
    index->setGroupInitString(sample.formDefinitionPath());
    spies.clearCalls();
    index->UpdateRecordAPI();
    EXPECT_EQ(spies.callsStartingWith("VXScanIndex.SelectGroup"),
              QStringList{"VXScanIndex.SelectGroup(Group)"});
}

} // namespace
