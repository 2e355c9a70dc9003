#include "IndexFixture.h"
#include "portable/QueryRows.h"
#include "session/UiServices.h"

#include <QDate>
#include <QDateTime>

using namespace vx;
using namespace vx::test;

namespace {

class DirectCommitTest : public IndexFixture {
protected:
    static constexpr qint32 NewItem = 9001;

    void SetUp() override {
        startUp();
        index->setCurItemId(NewItem);
        index->setCurFileType(4);
        spies.clearCalls();
    }
    QVariantMap itemRow() const {
        return firstRow("select * from KTItem where itemid = " + QString::number(NewItem));
    }
    QVariantMap groupRow() const {
        return firstRow("select * from Invoices where itemid = " + QString::number(NewItem));
    }
    QStringList keywordRows() const {
        return rowsOf(openRepository(), "select keyword from keywords where itemid = " +
                                            QString::number(NewItem) + " order by keyword");
    }
};

TEST_F(DirectCommitTest, WritesTheItemGroupAndKeywordRows) {
    field("InvoiceNo").value = QStringLiteral("  INV-7 ");
    field("Customer").value = QStringLiteral("Acme");
    field("Amount").value = 42;
    field("InvoiceDate").value = QDate(2024, 5, 17);
    field("Notes").value = QString(2, ' ') + QString(64010, 'n');
    pickKeyword(QStringLiteral("urgent"));
    pickKeyword(QStringLiteral("invoice"));

    const QDateTime before = QDateTime::currentDateTime().addSecs(-2);
    ASSERT_TRUE(index->UpdateRecord());
    EXPECT_TRUE(companionCalls().isEmpty()); // the direct path never calls the API

    const QVariantMap item = itemRow();
    ASSERT_FALSE(item.isEmpty());
    EXPECT_EQ(item.value("username"), "alice");
    EXPECT_EQ(item.value("groupid").toInt(), sample.groupId());
    EXPECT_EQ(item.value("type").toInt(), 4);
    for (const char* zero : {"lockcount", "attachment", "deleted"})
        EXPECT_EQ(item.value(zero).toInt(), 0) << zero;
    EXPECT_EQ(item.value("description").toString(), "");
    EXPECT_EQ(item.value("tag"), " ");
    EXPECT_GE(item.value("idx_date").toDateTime(), before);

    const QVariantMap row = groupRow();
    EXPECT_EQ(row.value("invoiceno"), "INV-7");
    EXPECT_EQ(row.value("customer"), "Acme");
    EXPECT_TRUE(row.value("status").isNull());
    EXPECT_EQ(row.value("amount").toInt(), 42);
    EXPECT_EQ(row.value("invoicedate").toDate(), QDate(2024, 5, 17));
    EXPECT_NE(row.value("paid").toInt(), 0); // the untouched check box is stored as set
    EXPECT_EQ(row.value("categories"), " "); // no entries: one blank
    EXPECT_EQ(row.value("notes").toString(), QString(63998, 'n'));

    EXPECT_EQ(keywordRows(), (QStringList{"invoice", "urgent"}));
}

TEST_F(DirectCommitTest, WarnsBeforeCuttingATextToItsColumnAndJoinsListEntries) {
    field("InvoiceNo").value = QStringLiteral("INV-0123456789-0123456789"); // 25 characters
    field("Paid").value = false;
    field("Categories").entries = QStringList{"a", "b", "c"};
    environment.ui().answerMessage(MessageAnswer::Ok);
    ASSERT_TRUE(index->UpdateRecord());
    EXPECT_EQ(promptTexts(environment.ui()),
              (QStringList{promptText("", "The data in Field InvoiceNo will be truncated to 20",
                                      MessageStyle::OkOnly)}));
    const QVariantMap row = groupRow();
    EXPECT_EQ(row.value("invoiceno"), "INV-0123456789-01234");
    EXPECT_EQ(row.value("paid").toInt(), 0);
    EXPECT_EQ(row.value("categories"), "a;b;c");
    EXPECT_TRUE(keywordRows().isEmpty());
}

TEST_F(DirectCommitTest, FailuresAreReportedAndEarlierRowsStay) {
    // An invalid form writes nothing, silently.
    spies.answers().fieldsValid = false;
    EXPECT_FALSE(index->UpdateRecord());
    EXPECT_TRUE(itemRow().isEmpty());

    // A group table that does not exist: KTItem is written, then the error is shown.
    spies.answers().fieldsValid = true;
    index->setGroupName(QStringLiteral("NoSuchGroup"));
    environment.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(index->UpdateRecord());
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    const Prompt prompt = environment.ui().prompts().first();
    EXPECT_EQ(prompt.title, "UpdateRecord");
    EXPECT_EQ(prompt.style, MessageStyle::OkOnly | MessageStyle::Critical);
    EXPECT_FALSE(prompt.text.isEmpty());
    EXPECT_FALSE(itemRow().isEmpty());
    EXPECT_TRUE(groupRow().isEmpty());
}

TEST_F(DirectCommitTest, GetUserIdLooksUpByNameAndReportsAnUnknownOne) {
    const qint32 expected =
        firstRow("select * from KTUsers where username = 'bob'").value("userid").toInt();
    ASSERT_GT(expected, 0);
    QString name = QStringLiteral("bob");
    EXPECT_EQ(index->GetUserId(name), expected);

    name = QStringLiteral("nobody");
    environment.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_EQ(index->GetUserId(name), 0);
    EXPECT_EQ(promptTexts(environment.ui()),
              (QStringList{promptText("", "Error retrieveing UserID for UserName: nobody",
                                      MessageStyle::OkOnly)}));
}

} // namespace
