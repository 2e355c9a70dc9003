#include "IndexFixture.h"
#include "portable/QueryRows.h"
#include "session/GroupConnection.h"
#include "session/LibraryState.h"
#include "session/SystemFolder.h"
#include "session/UiServices.h"

#include <QComboBox>
#include <QDate>
#include <QFile>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QTableView>
#include <QTest>

using namespace vx;
using namespace vx::test;

namespace {

class IndexSessionTest : public IndexFixture {
protected:
    QComboBox* fieldChoice() const { return index->findChild<QComboBox*>("cbFields"); }
    QTableView* hintGrid() const { return index->findChild<QTableView*>("Hints"); }
    QStringList fieldChoices() const {
        QStringList items;
        for (int i = 0; i < fieldChoice()->count(); ++i)
            items << fieldChoice()->itemText(i);
        return items;
    }

    // Sets the allowupdate text of the form definition's control for `column`.
    void setAllowUpdate(const QString& column, const QString& text) {
        QFile file(sample.formDefinitionPath());
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        QString xml = QString::fromUtf8(file.readAll());
        const QRegularExpression element(">" + column + "</columnname>.*?<allowupdate>\\K[^<]*",
                                         QRegularExpression::DotMatchesEverythingOption);
        ASSERT_TRUE(element.match(xml).hasMatch()) << column.toStdString();
        xml.replace(element, text);
        ASSERT_TRUE(file.resize(0) && file.write(xml.toUtf8()) > 0);
    }

    QString handOverPath() const { return handOverFilePath(QStringLiteral("~znindex")); }
    void writeHandOver(const QByteArray& body) {
        environment.writeFile(QDir(environment.path()).relativeFilePath(handOverPath()),
                              "[Main-Invoices]\n" + body);
    }
};

TEST_F(IndexSessionTest, InitOpensTheSessionAndDetectsSecurityFromBaseTablesOnly) {
    startUp();
    EXPECT_TRUE(index->isInitialised());
    EXPECT_TRUE(library().securityTablePresent);
    EXPECT_EQ(library().initFilePath, sample.initFilePath());
    EXPECT_NE(spies.lastSecurity(), nullptr);
    EXPECT_EQ(index->userIds(), QVariantList{QStringLiteral("empty")});
    EXPECT_FALSE(child("kss2")->isVisibleTo(index.get()));

    // A view of that name is not the security table.
    {
        Connection connection = openRepository();
        connection.execute("DROP TABLE KTSecurity");
        connection.execute("CREATE VIEW KTSecurity AS SELECT itemid, username FROM KTItem");
    }
    createIndex();
    index->setInit(sample.initFilePath());
    EXPECT_TRUE(index->isInitialised());
    EXPECT_FALSE(library().securityTablePresent);
    EXPECT_EQ(spies.lastSecurity(), nullptr);
}

TEST_F(IndexSessionTest, InitWithoutDataLinksShowsTheErrorAndAnEmptyStatus) {
    createIndex();
    const QString initFile = environment.writeFile("broken/Invoices.ini", "[other]\nGroup=x\n");
    QString description;
    try {
        openGroupConnection(initFile);
    } catch (const Error& error) {
        description = error.description();
    }
    ASSERT_FALSE(description.isEmpty());
    environment.ui().answerMessage(MessageAnswer::Ok);
    index->setInit(initFile);
    EXPECT_EQ(promptTexts(environment.ui()),
              (QStringList{promptText("Init", description + "-",
                                      MessageStyle::OkOnly | MessageStyle::Critical)}));
    EXPECT_FALSE(index->isInitialised());

    // A missing API class stops start-up after the connection step.
    CompanionOverride noApi(CompanionClass::ScanIndex, nullptr);
    environment.ui().answerMessage(MessageAnswer::Ok);
    index->setInit(sample.initFilePath());
    EXPECT_TRUE(environment.ui().prompts().last().text.endsWith("-Connection Opened."));
    EXPECT_FALSE(index->isInitialised());
}

TEST_F(IndexSessionTest, FieldChoiceFollowsPermissionTypeAndAllowUpdate) {
    startUp(1);
    EXPECT_EQ(fieldChoices(), QStringList{"Customer"});
    EXPECT_EQ(fieldChoice()->placeholderText(), "Select a field for editing");
    startUp(4);
    EXPECT_EQ(fieldChoices(), QStringList{"Customer"});
    startUp(2);
    EXPECT_TRUE(fieldChoices().isEmpty());

    // "TRUE" counts in any letter case, but only for a combo field.
    setAllowUpdate("Status", "TRUE");
    setAllowUpdate("InvoiceNo", "true");
    setAllowUpdate("Customer", "false");
    startUp(5);
    EXPECT_EQ(fieldChoices(), QStringList{"Status"});
}

TEST_F(IndexSessionTest, HintGridEditsTheChosenFieldsTableAndHidesSilentlyWhenMissing) {
    startUp();
    index->resize(600, 400);
    index->show();
    tabs()->setCurrentIndex(3);
    fieldChoice()->setCurrentIndex(0);
    ASSERT_TRUE(hintGrid()->isVisible());
    QAbstractItemModel* model = hintGrid()->model();
    EXPECT_GE(model->rowCount(), sample.expected().customerHints);
    const QString first = model->index(0, 0).data().toString();
    const QString firstInTable = firstRow("Select * from InvoicesCustomerHints order by Customer")
                                     .value("customer")
                                     .toString();
    EXPECT_EQ(first, firstInTable);

    // An edit in the grid reaches the hint table.
    ASSERT_TRUE(model->setData(model->index(0, 0), "AAA Test"));
    EXPECT_EQ(firstRow("Select * from InvoicesCustomerHints order by Customer").value("customer"),
              "AAA Test");

    // Enter moves one row down.
    hintGrid()->setCurrentIndex(model->index(0, 0));
    QTest::keyClick(hintGrid(), Qt::Key_Return);
    EXPECT_EQ(hintGrid()->currentIndex().row(), 1);

    // The empty last row adds a hint; Delete asks first and only Yes removes one.
    const auto hints = [&] {
        return rowsOf(openRepository(),
                      "Select Customer from InvoicesCustomerHints order by Customer");
    };
    const int stored = int(hints().size());
    ASSERT_EQ(model->rowCount(), stored + 1);
    ASSERT_TRUE(model->setData(model->index(stored, 0), "ZZZ Added"));
    EXPECT_EQ(hints().size(), stored + 1);
    EXPECT_EQ(hints().last(), "ZZZ Added");
    for (const MessageAnswer answer : {MessageAnswer::No, MessageAnswer::Yes}) {
        environment.ui().answerMessage(answer);
        hintGrid()->setCurrentIndex(model->index(0, 0));
        QTest::keyClick(hintGrid(), Qt::Key_Delete);
    }
    EXPECT_EQ(environment.ui().messageTexts(),
              (QStringList{"Delete Current Row?", "Delete Current Row?"}));
    EXPECT_EQ(hints().size(), stored);
    EXPECT_FALSE(hints().contains("AAA Test"));

    // Without the table the grid goes away and nobody is told.
    openRepository().execute("DROP TABLE InvoicesCustomerHints");
    emit fieldChoice()->activated(0);
    EXPECT_FALSE(hintGrid()->isVisible());
}

TEST_F(IndexSessionTest, HandOverFileFillsTheFormOnceAndIsDeletedUnlessAValueIsBad) {
    writeHandOver("InvoiceNo=INV-9\nCustomer=\nAmount=2.5\nPaid=TRUE\nInvoiceDate=2024-05-17\n"
                  "Categories=x;y\nUnknownColumn=1\n");
    createIndex();
    index->setCurrentLibrary("Main");
    index->setGroupName("Invoices");
    index->RefreshFormContent(); // not initialised yet: nothing happens
    EXPECT_TRUE(QFile::exists(handOverPath()));

    index->setInit(sample.initFilePath());
    index->setGroupInitString(sample.formDefinitionPath());
    spies.clearCalls();
    index->RefreshFormContent();
    EXPECT_FALSE(QFile::exists(handOverPath()));
    EXPECT_EQ(spies.callsWithoutReads().value(0), "VXDynaForm.ResetFields()");
    EXPECT_EQ(field("InvoiceNo").value, QVariant("INV-9"));
    EXPECT_FALSE(field("Customer").value.isValid()); // an empty value is no value
    EXPECT_EQ(spies.callsStartingWith("VXDynaForm.FieldValue = ").size(), 5);
    EXPECT_EQ(field("Amount").value, QVariant(qint32(2))); // halves go to even
    EXPECT_EQ(field("Paid").value, QVariant(true));
    EXPECT_EQ(field("InvoiceDate").value.toDate(), QDate(2024, 5, 17));
    EXPECT_EQ(field("Categories").value, QVariant("x;y"));

    // A second refresh finds no file and leaves the form alone.
    spies.clearCalls();
    index->RefreshFormContent();
    EXPECT_TRUE(spies.callsStartingWith("VXDynaForm.ResetFields").isEmpty());

    // A value its field cannot take is reported and the file kept.
    writeHandOver("Amount=lots\n");
    environment.ui().answerMessage(MessageAnswer::Ok);
    index->RefreshFormContent();
    EXPECT_EQ(promptTexts(environment.ui()),
              (QStringList{promptText("", "Type mismatch", MessageStyle::OkOnly)}));
    EXPECT_TRUE(QFile::exists(handOverPath()));
}

TEST_F(IndexSessionTest, TabsShowExactlyOnePageAndGroupNameRenamesTheFirst) {
    createIndex();
    EXPECT_EQ(tabs()->tabText(0), "Group");
    index->setGroupName("Invoices");
    EXPECT_EQ(tabs()->tabText(0), "Invoices");
    EXPECT_EQ(tabs()->tabText(2), "Edit Dictionary");
    EXPECT_EQ(tabs()->tabToolTip(3), "Modify entries in the hint lists");
    index->resize(640, 420);
    index->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(index.get()));

    const char* pages[] = {"Group", "kss2", "dcs", "picTab3"};
    for (int tab : {1, 2, 3, 0}) {
        QTest::mouseClick(tabs(), Qt::LeftButton, {}, tabs()->tabRect(tab).center());
        for (int page = 0; page < 4; ++page)
            EXPECT_EQ(child(pages[page])->isVisible(), page == tab)
                << "tab " << tab << " page " << pages[page];
    }
    // Every page fills the area under the tabs.
    const QRect area = child("Group")->geometry();
    EXPECT_GT(area.top(), 0);
    EXPECT_GT(area.width(), 600);
    for (const char* page : pages)
        EXPECT_EQ(child(page)->geometry(), area) << page;
}

TEST_F(IndexSessionTest, KeyDownRefreshAndDone) {
    startUp();
    short receivedKey = 0;
    short receivedShift = 0;
    QObject::connect(index.get(), &VXIndex::KeyDown, [&](short& key, short& shift) {
        receivedKey = key;
        receivedShift = shift;
    });
    QTest::keyClick(index.get(), Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(receivedKey, 113);
    EXPECT_EQ(receivedShift, 1);

    // Refresh clears the form and the picked keywords.
    pickKeyword("urgent");
    spies.clearCalls();
    index->Refresh();
    EXPECT_EQ(spies.callsWithoutReads(), QStringList{"VXDynaForm.ClearForm()"});
    QObject* keywords = child("kss2");
    callMember(keywords, "MoveFirst");
    EXPECT_TRUE(readMember(keywords, "EOF").toBool());

    // After Done the hand-over file waits for the next session.
    index->Done();
    EXPECT_FALSE(index->isInitialised());
    writeHandOver("InvoiceNo=INV-2\n");
    index->RefreshFormContent();
    EXPECT_TRUE(QFile::exists(handOverPath()));
    index->setInit(sample.initFilePath());
    EXPECT_TRUE(index->isInitialised());
}

} // namespace
