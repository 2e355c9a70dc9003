#include "FileOpsFixture.h"
#include "operations/DocumentOperations.h"
#include "operations/TextExportFormat.h"
#include "operations/TextFilePrinter.h"

#include <QLocale>

namespace vx::test {
namespace {

// Dates in the file follow the user's short date format: pin it for the test.
class TextExportTest : public FileOpsFixture {
protected:
    void SetUp() override { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void TearDown() override {
        QLocale::setDefault(QLocale::system());
        TextFilePrinter::setOutputFileName(QString());
    }
};

TEST_F(TextExportTest, FileHoldsTheHeaderAndOneQuotedLinePerDocumentInSelectionOrder) {
    execute(QStringLiteral(
        "UPDATE Invoices SET InvoiceNo = 'INV-1', Customer = 'Acme \"Big\" Tools', "
        "Status = 'Open', Amount = 1234, InvoiceDate = '2024-03-05 00:00:00', Paid = -1, "
        "Categories = 'Tax;Travel' WHERE itemid = 1"));
    // Line breaks go in through a record set: the engines spell character codes differently.
    Recordset notes;
    notes.open(QStringLiteral("select * from Invoices where itemid = 1"), hitList.connection(),
               CursorType::Keyset, LockType::Optimistic);
    notes.setValue(QStringLiteral("Notes"), QStringLiteral("two\r\nlines\nand, a comma"));
    notes.update();
    execute(QStringLiteral("UPDATE Invoices SET InvoiceNo = 'INV-2', Customer = '', "
                           "Status = NULL, Amount = 0, InvoiceDate = '2024-12-31 13:45:10', "
                           "Paid = 0, Categories = 'Misc', Notes = NULL WHERE itemid = 2"));
    const QString folder = makeFolder(QStringLiteral("reports"));
    const QString path = folder + QStringLiteral("/list.csv");
    environment.writeFile(QStringLiteral("reports/list.csv"), QByteArray(4096, 'x'));
    hitList.selection = {2, 99999, 1}; // 99999 is no document
    ui().answerFolder(folder).answerInput(QStringLiteral("list.csv"));

    EXPECT_TRUE(printData(hitList));
    EXPECT_EQ(contentsOf(path),
              "InvoiceNo,Customer,Status,Amount,InvoiceDate,Paid,Categories,Notes\r\n"
              "\"INV-2\",\"\",\"\",\"0\",\"12/31/2024 13:45:10\",\"False\",\"Misc\",\"\"\r\n"
              "\"INV-1\",\"Acme Big Tools\",\"Open\",\"1234\",\"3/5/2024\",\"True\","
              "\"Tax;Travel\",\"twolinesand, a comma\"\r\n");
    ASSERT_EQ(ui().prompts().size(), 2);
    EXPECT_EQ(ui().prompts()[0].text,
              QStringLiteral("Select the Location to create the text file"));
    EXPECT_EQ(ui().prompts()[1].text,
              QStringLiteral("Please specify the name of the text file to create. (csv file)"));
    EXPECT_EQ(ui().prompts()[1].title, QStringLiteral("Export Table"));
    ASSERT_EQ(ui().shellCalls().size(), 1);
    EXPECT_EQ(ui().shellCalls()[0], std::make_pair(QStringLiteral("open"), path));
    EXPECT_FALSE(ui().busy());
    EXPECT_FALSE(progressShown());

    EXPECT_EQ(textexport::valueText(1234.5), QStringLiteral("1234.5"));
    EXPECT_EQ(textexport::valueText(0.1 + 0.2), QStringLiteral("0.3"));
}

TEST_F(TextExportTest, CancelledPromptsWriteNothingAndFailuresAreShown) {
    const QString folder = makeFolder(QStringLiteral("reports"));
    hitList.selection = {1};
    ui().answerFolder(QString());
    EXPECT_FALSE(printData(hitList));
    ui().answerFolder(folder).cancelInput();
    EXPECT_FALSE(printData(hitList));
    ui().answerFolder(folder).answerInput(QString());
    EXPECT_FALSE(printData(hitList));
    EXPECT_EQ(ui().prompts().size(), 5);
    EXPECT_TRUE(QDir(folder).isEmpty());

    const QString missing = environment.filePath(QStringLiteral("missing"));
    ui().answerFolder(missing)
        .answerInput(QStringLiteral("list.csv"))
        .answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(printData(hitList));
    EXPECT_TRUE(ui().lastPrompt()->text.startsWith(QStringLiteral("Cannot create ") + missing));
    EXPECT_EQ(ui().lastPrompt()->style, MessageStyle::OkOnly);
    EXPECT_FALSE(progressShown());
    EXPECT_TRUE(ui().shellCalls().isEmpty());
}

TEST_F(TextExportTest, WhenTheDesktopCannotOpenTheFileItIsPrinted) {
    const QString folder = makeFolder(QStringLiteral("reports"));
    const QString pdf = environment.filePath(QStringLiteral("printed.pdf"));
    TextFilePrinter::setOutputFileName(pdf);
    ui().setShellExecuteResult(false);
    hitList.selection = {1, 2, 3};
    ui().answerFolder(folder).answerInput(QStringLiteral("report"));

    EXPECT_TRUE(printData(hitList));
    EXPECT_TRUE(QFile::exists(folder + QStringLiteral("/report")));
    EXPECT_TRUE(contentsOf(pdf).startsWith("%PDF"));
}

} // namespace
} // namespace vx::test
