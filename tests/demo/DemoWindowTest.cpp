#include "DemoWindow.h"

#include "IndexPage.h"
#include "SearchPage.h"
#include "companions/DefaultCompanions.h"
#include "data/Recordset.h"
#include "server/LateBinding.h"
#include "session/GroupConnection.h"
#include "session/SystemFolder.h"
#include "support/SampleRepository.h"
#include "support/ScriptedUiServices.h"
#include "support/TestEnvironment.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTabWidget>
#include <gtest/gtest.h>

namespace {

using vx::demo::DemoWindow;

void fillForm(QObject* form, const QVariantMap& values) {
    vx::callMember(form, "MoveFirstField");
    while (!vx::readMember(form, "FieldEOF").toBool()) {
        const QString column = vx::readMember(form, "FieldName").toString();
        if (values.contains(column))
            vx::writeMember(form, "FieldValue", values.value(column));
        vx::callMember(form, "MoveNextField");
    }
}

class DemoWindowTest : public ::testing::Test {
protected:
    DemoWindowTest() { vx::registerDefaultCompanions(); }

    vx::test::TestEnvironment environment;
    vx::test::SampleRepository sample;
};

TEST_F(DemoWindowTest, OpensTheSampleGroupAndRefusesAMissingOneWithAMessage) {
    DemoWindow window;
    EXPECT_TRUE(window.searchPage()->unconnectedEvents().isEmpty())
        << window.searchPage()->unconnectedEvents().join(", ").toStdString();

    const QString missing = environment.filePath("nowhere/Group.ini");
    environment.ui().answerMessage(vx::MessageAnswer::Ok);
    EXPECT_FALSE(window.openGroup(missing));
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().prompts()[0].text,
              QStringLiteral("The group initialisation file \"%1\" does not exist.")
                  .arg(QDir::toNativeSeparators(missing)));
    EXPECT_EQ(environment.ui().prompts()[0].title, "Open group");

    ASSERT_TRUE(window.openGroup(sample.initFilePath()));
    EXPECT_EQ(window.session().groupName, "Invoices");
    EXPECT_EQ(window.session().groupId, sample.groupId());
    EXPECT_EQ(window.session().formPath, sample.formDefinitionPath());
    EXPECT_EQ(window.session().queryFormPath, sample.queryFormPath());
    EXPECT_EQ(window.initFileIn(sample.dir()), sample.initFilePath());
    EXPECT_EQ(environment.ui().prompts().size(), 1) << "opening the sample asks nothing";
}

TEST_F(DemoWindowTest, IndexPageFilesTheChosenDocumentThroughTheIndexingApi) {
    DemoWindow window;
    ASSERT_TRUE(window.openGroup(sample.initFilePath()));
    vx::demo::IndexPage* page = window.indexPage();

    environment.ui().answerMessage(vx::MessageAnswer::Ok);
    EXPECT_EQ(page->fileDocument(), 0);
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().prompts()[0].text, "Choose the document file to index first.");

    const QString document = environment.writeFile("scan/new-invoice.txt", "INVOICE 9001");
    page->setDocumentPath(document);
    QObject* form = page->indexControl()->findChild<QObject*>("Group");
    ASSERT_NE(form, nullptr);
    fillForm(form, {{"InvoiceNo", "INV-0009001"},
                    {"Customer", "Acme Tools"},
                    {"InvoiceDate", QDate(2026, 1, 15)},
                    {"Amount", 1250}});
    const qint32 itemId = page->fileDocument();
    ASSERT_GT(itemId, 0) << (environment.ui().prompts().size() > 1
                                 ? environment.ui().prompts().last().text.toStdString()
                                 : std::string());

    vx::Connection connection = vx::openGroupConnection(sample.initFilePath());
    vx::Recordset row;
    row.open(QStringLiteral("select * from Invoices where itemid = %1").arg(itemId), connection);
    ASSERT_FALSE(row.eof());
    EXPECT_EQ(row.value("InvoiceNo").toString(), "INV-0009001");
    EXPECT_EQ(row.value("Amount").toInt(), 1250);
    vx::Recordset file;
    file.open(QStringLiteral("select * from KTFile where itemid = %1").arg(itemId), connection);
    ASSERT_FALSE(file.eof());
    // The host finds the filed copy where the repository keeps its documents.
    const QString located = window.locateDocument(itemId, file.value("fName").toString());
    ASSERT_NE(located, "ERROR");
    EXPECT_TRUE(QFileInfo(located).isFile());

    page->nextDocument();
    EXPECT_TRUE(page->documentPath().isEmpty());
}

TEST_F(DemoWindowTest, QueryHandOverFileRunsTheSearchAtOnce) {
    DemoWindow window;
    ASSERT_TRUE(window.openGroup(sample.initFilePath()));
    window.pages()->setCurrentWidget(window.indexPage());
    const QString path = vx::handOverFilePath("~znfind");
    ASSERT_TRUE(QDir().mkpath(vx::handOverFolder()));
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Main-Invoices]\r\nCustomer=Kestrel Air\r\n");
    }
    window.applyHandOvers();
    EXPECT_FALSE(QFile::exists(path)) << "a hand-over file is used once";
    EXPECT_EQ(window.pages()->currentWidget(), window.searchPage());
    ASSERT_GT(window.currentItemId(), 0) << "the search ran and the hit list raised CurrentItemID";

    vx::Connection connection = vx::openGroupConnection(sample.initFilePath());
    vx::Recordset row;
    row.open(QStringLiteral("select Customer from Invoices where itemid = %1")
                 .arg(window.currentItemId()),
             connection);
    ASSERT_FALSE(row.eof());
    EXPECT_EQ(row.value("Customer").toString(), "Kestrel Air");
    EXPECT_TRUE(environment.ui().prompts().isEmpty());

    // Nothing waiting: nothing changes.
    window.pages()->setCurrentWidget(window.indexPage());
    window.applyHandOvers();
    EXPECT_EQ(window.pages()->currentWidget(), window.indexPage());
}

} // namespace
