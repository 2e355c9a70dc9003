#include "query/VXFavourites.h"
#include "query/VXQuery.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "server/TypeLibrary.h"
#include "session/LibraryState.h"
#include "session/SystemFolder.h"
#include "support/SampleRepository.h"
#include "support/SpyCompanions.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTabBar>
#include <gtest/gtest.h>
#include <memory>

using namespace vx;

namespace {

// The query control over a spy form and a real keyword picker on the sample.
class QueryControlTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;
    test::SpyCompanions spies{test::SpyCompanions::DynaForm | test::SpyCompanions::SqlQuery};
    std::unique_ptr<QWidget> widget;
    VXQuery* control = nullptr;

    void SetUp() override {
        widget.reset(ControlFactory::create(QStringLiteral("VXUILib.VXQuery")));
        control = qobject_cast<VXQuery*>(widget.get());
        ASSERT_NE(control, nullptr);
        ASSERT_NE(spies.lastForm(), nullptr);
        EXPECT_EQ(spies.lastForm()->objectName(), "Group");
        ASSERT_NE(keywords(), nullptr);
    }

    QWidget* keywords() const { return control->findChild<QWidget*>(QStringLiteral("kss1")); }
    QTabBar* tabs() const { return control->findChild<QTabBar*>(); }

    void init(const QString& formPath) {
        writeMember(control, "MethodInitString", sample.initFilePath());
        QString path = formPath;
        EXPECT_TRUE(control->Init(path));
    }

    void pick(const QString& keyword) { callMember(keywords(), "AddListItem", keyword); }

    QString handOverPath() const { return handOverFilePath(QStringLiteral("~znfind")); }
    void writeHandOver(const QByteArray& body) const {
        ASSERT_TRUE(QDir().mkpath(handOverFolder()));
        QFile file(handOverPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(body);
    }
};

TEST_F(QueryControlTest, QueryStringJoinsKeywordsAndAppliesSecurityOnlyWhenPresent) {
    init(sample.queryFormPath());
    spies.answers().queryText = QStringLiteral("SELECT * FROM ktitem WHERE x = 1 ORDER BY y");
    EXPECT_EQ(control->queryString(), "SELECT * FROM ktitem WHERE x = 1 ");

    pick(QStringLiteral("a"));
    pick(QString()); // an empty entry gives no empty pair of quotes
    pick(QStringLiteral("b"));
    const QString joined =
        QStringLiteral("SELECT * FROM ktitem ,keywords WHERE x = 1  and "
                       "ktitem.itemid = keywords.itemid and keyword IN ('a','b') ");
    EXPECT_EQ(readMember(control, "QueryString").toString(), joined);
    EXPECT_TRUE(spies.callsStartingWith("VXSQLQuery.").isEmpty());

    // With security the parser gets the joined text and the user id (-1 until the host sets it).
    library().securityTablePresent = true;
    spies.answers().securedQuery = QStringLiteral("secured");
    EXPECT_EQ(control->queryString(), "secured");
    control->setUserID(7);
    control->queryString();
    EXPECT_EQ(spies.callsStartingWith("VXSQLQuery."),
              QStringList({"VXSQLQuery.QueryStringWithSecurity(" + joined + ", -1)",
                           "VXSQLQuery.QueryStringWithSecurity(" + joined + ", 7)"}));

    // An empty form text is an empty search: keywords ignored, no parser asked.
    spies.clearCalls();
    spies.answers().queryText.clear();
    EXPECT_EQ(control->queryString(), QString());
    EXPECT_TRUE(spies.callsStartingWith("VXSQLQuery.").isEmpty());

    // Refresh empties the form and the picked keywords.
    spies.answers().queryText = QStringLiteral("SELECT * FROM ktitem WHERE x = 1");
    control->Refresh();
    EXPECT_TRUE(spies.calls().contains("VXDynaForm.ClearForm()"));
    library().securityTablePresent = false;
    EXPECT_EQ(control->queryString(), "SELECT * FROM ktitem WHERE x = 1");
}

TEST_F(QueryControlTest, InitLoadsTheFormAndSetsTheLibraryWideFormPath) {
    spies.answers().loadForm = false;
    writeMember(control, "MethodInitString", sample.initFilePath());
    QString path = sample.queryFormPath();
    EXPECT_FALSE(control->Init(path)) << "Init passes on the form's load result";
    EXPECT_EQ(library().formDefinitionPath, sample.queryFormPath());
    EXPECT_TRUE(spies.calls().contains("VXDynaForm.LoadForm(" + sample.queryFormPath() + ")"));
    EXPECT_TRUE(keywords()->isHidden());
}

TEST_F(QueryControlTest, CaptionsFollowGroupNameAndOnlyFillAnEmptyOneFromCurrentGroup) {
    EXPECT_EQ(tabs()->count(), 2);
    EXPECT_EQ(tabs()->tabText(0), QString());
    EXPECT_EQ(tabs()->tabText(1), "Keywords");
    writeMember(control, "CurrentGroup", QStringLiteral("First"));
    EXPECT_EQ(tabs()->tabText(0), "First");
    writeMember(control, "GroupName", QStringLiteral("Invoices"));
    writeMember(control, "CurrentGroup", QStringLiteral("Other"));
    EXPECT_EQ(tabs()->tabText(0), "Invoices");
    writeMember(control, "GroupName", QStringLiteral("Receipts"));
    EXPECT_EQ(tabs()->tabText(0), "Receipts");
}

TEST_F(QueryControlTest, HandOverFillsRangesInFormOrderDeletesTheFileAndRunsTheSearchOnlyWhenRead) {
    const QString form = environment.writeFile(
        QStringLiteral("form.xml"),
        "<form><controls>"
        "<control><columnname>A</columnname><type>NumericField</type></control>"
        "<control><columnname>B</columnname><type>NumericField</type></control>"
        "<control><columnname>D</columnname><type>DateField</type></control>"
        "<control><columnname>Paid</columnname><type>CheckField</type></control>"
        "<control><columnname>Name</columnname><type>EditField</type></control>"
        "<control><columnname>Odd</columnname><type>PictureField</type></control>"
        "</controls></form>");
    spies.answers().fields = {{"A", "", {}, {}},    {"A", "", {}, {}},    {"D", "", {}, {}},
                              {"B", "", {}, {}},    {"B", "", {}, {}},    {"D", "", {}, {}},
                              {"Paid", "", {}, {}}, {"Name", "", {}, {}}, {"Odd", "", {}, {}}};
    QSignalSpy performed(control, &VXQuery::PerformQuery);

    // Nothing happens before Init, even with a file waiting.
    writeHandOver("[Main-Invoices]\nAFROM=1\n");
    writeMember(control, "CurrentLibrary", QStringLiteral("Main"));
    writeMember(control, "GroupName", QStringLiteral("Invoices"));
    control->RefreshFormContent();
    EXPECT_TRUE(QFile::exists(handOverPath()));
    init(form);

    writeHandOver("[Main-Invoices]\nAFROM=1\nATO=2.5\nBFROM=3.5\nBTO=\nDFROM=2024-03-01\n"
                  "DTO=2024-03-31\nPaid=true\nName=Acme\nOdd=x\n"
                  "[Main-Other]\nBTO=99\n");
    spies.clearCalls();
    control->RefreshFormContent();
    EXPECT_EQ(performed.count(), 1);
    EXPECT_FALSE(QFile::exists(handOverPath()));
    EXPECT_EQ(
        spies.callsStartingWith("VXDynaForm.FieldValue = "),
        QStringList({"VXDynaForm.FieldValue = 1", "VXDynaForm.FieldValue = 2",
                     "VXDynaForm.FieldValue = 2024-03-01T00:00:00", "VXDynaForm.FieldValue = 4",
                     "VXDynaForm.FieldValue = 2024-03-31T00:00:00", "VXDynaForm.FieldValue = True",
                     "VXDynaForm.FieldValue = Acme"}))
        << "2.5 rounds to 2 and 3.5 to 4; an empty BTO and an unknown type are left alone";
    EXPECT_EQ(spies.callsStartingWith("VXDynaForm.ResetFields").size(), 1);

    // A second run finds no file and does nothing.
    spies.clearCalls();
    control->RefreshFormContent();
    EXPECT_EQ(performed.count(), 1);
    EXPECT_TRUE(spies.calls().isEmpty());

    // An empty group name leaves the file for later.
    writeHandOver("[Main-]\nAFROM=1\n");
    writeMember(control, "GroupName", QString());
    control->RefreshFormContent();
    EXPECT_TRUE(QFile::exists(handOverPath()));
    EXPECT_EQ(performed.count(), 1);

    // The section is also found through CurrentGroup. A value its field cannot take is shown,
    // the file goes and no search runs; fields before the bad one keep their values.
    writeMember(control, "CurrentGroup", QStringLiteral("Invoices"));
    writeHandOver("[Main-Invoices]\nDFROM=2024-04-01\nBFROM=lots\nDTO=2024-04-30\n");
    environment.ui().answerMessage(MessageAnswer::Ok);
    control->RefreshFormContent();
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    const test::Prompt prompt = environment.ui().prompts().first();
    EXPECT_EQ(prompt.text, "Type mismatch");
    EXPECT_EQ(prompt.title, "RefreshFormContent");
    EXPECT_EQ(prompt.style, MessageStyle::OkOnly | MessageStyle::Critical);
    EXPECT_FALSE(QFile::exists(handOverPath()));
    EXPECT_EQ(performed.count(), 1);
    EXPECT_EQ(spies.lastForm()->fields().at(2).value.toDate(), QDate(2024, 4, 1));
    EXPECT_FALSE(spies.lastForm()->fields().at(5).value.isValid());
}

TEST_F(QueryControlTest, KeyDownOfTheFormPassesThroughWithTheHostsAnswer) {
    // The host may answer inside the event; the form sees the answer.
    QObject::connect(control, &VXQuery::KeyDown, control, [](short& keyCode, short& shift) {
        EXPECT_EQ(keyCode, 13);
        EXPECT_EQ(shift, 2);
        keyCode = 0;
    });
    short keyCode = 13;
    short shift = 2;
    emit spies.lastForm()->KeyDown(keyCode, shift);
    EXPECT_EQ(keyCode, 0);
}

// Every listed member exists, in the order hosts know them.
TEST(QueryRegistration, BothControlsListTheirMembersInOrder) {
    const auto expectMembers = [](const QMetaObject& meta, const QStringList& members) {
        const QString text = typeLibraryText(meta);
        EXPECT_FALSE(text.contains(QStringLiteral("missing"))) << text.toStdString();
        qsizetype at = 0;
        for (const QString& member : members) {
            const qsizetype found = text.indexOf(QLatin1Char(' ') + member, at);
            EXPECT_GT(found, 0) << member.toStdString() << " out of order in\n"
                                << text.toStdString();
            at = qMax(at, found);
        }
    };
    expectMembers(VXQuery::staticMetaObject,
                  {"Refresh", "GroupName", "QueryString", "UserID", "QueryResult",
                   "MethodInitString", "Init", "CurrentLibrary", "CurrentGroup",
                   "RefreshFormContent", "KeyDown(short& KeyCode, short& Shift)", "PerformQuery"});
    expectMembers(VXFavourites::staticMetaObject,
                  {"Init", "AddItem", "RemoveItem", "Done",
                   "SelectedItem(QString& sName, QString& sString)"});
    EXPECT_TRUE(typeLibraryText(VXQuery::staticMetaObject)
                    .contains(QStringLiteral("property QString GroupName [put]")));
}

} // namespace
