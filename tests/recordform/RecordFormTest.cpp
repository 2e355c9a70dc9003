#include "hitlist/RecordForm.h"

#include "companions/DefaultCompanions.h"
#include "operations/Progressbar.h"
#include "portable/QueryRows.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/LibraryState.h"
#include "session/PromptText.h"
#include "session/companions/VXDynaForm.h"
#include "support/FakeHitListContext.h"
#include "support/SampleRepository.h"
#include "support/SpyCompanions.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QListWidget>
#include <gtest/gtest.h>

namespace vx::test {
namespace {

// Scripted services that let a test act while the code sleeps.
class SleepWatchingUi : public ScriptedUiServices {
public:
    std::function<void(int count)> onSleep;
    void sleep(int milliseconds) override {
        ScriptedUiServices::sleep(milliseconds);
        if (onSleep)
            onSleep(int(sleeps().size()));
    }
};

// The record form of a stand-in hit list on the sample, with both pickers made by class name.
class RecordFormTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        registerDefaultCompanions();
        registerLibraryControls();
    }
    void SetUp() override { start(); }
    void start() {
        recordForm.reset();
        hitList = std::make_unique<FakeHitListContext>(sample);
        keywords = ControlFactory::create("VXUILib.VXKeywords", hitList->controlWidget());
        users = ControlFactory::create("VXUILib.VXDocSec", hitList->controlWidget());
        recordForm = std::make_unique<RecordForm>(*hitList, keywords, users);
    }

    TestEnvironment environment;
    SampleRepository sample;
    std::unique_ptr<FakeHitListContext> hitList;
    QWidget* keywords = nullptr;
    QWidget* users = nullptr;
    std::unique_ptr<RecordForm> recordForm;

    ScriptedUiServices& ui() const { return environment.ui(); }
    VXDynaForm& form() const { return *hitList->form(); }
    void toField(const QString& name) const {
        form().MoveFirstField();
        while (!form().FieldEOF() && form().FieldName() != name)
            form().MoveNextField();
    }
    void setField(const QString& name, const QVariant& value) const {
        toField(name);
        form().setFieldValue(value);
    }
    QStringList listEntries(const QString& name) const {
        toField(name);
        QStringList entries;
        for (form().MoveFirstListItem(); form().ListItemPresent(); form().MoveNextListItem())
            entries << form().ListItemText();
        return entries;
    }
    static QStringList shown(QWidget* picker, const char* list) {
        QStringList items;
        for (const QListWidgetItem* item :
             picker->findChild<QListWidget*>(list)->findItems("*", Qt::MatchWildcard))
            items << item->text();
        items.sort();
        return items;
    }
    static void pick(QWidget* picker, const QStringList& items) {
        callMember(picker, "ClearContents");
        for (const QString& item : items)
            callMember(picker, "AddListItem", item);
    }
    QStringList column(const QString& sql) const { return rowsOf(hitList->connection(), sql); }
    void showItem(qint32 itemId) {
        ASSERT_TRUE(hitList->moveToItem(itemId));
        recordForm->UpdateForm();
    }
};

TEST_F(RecordFormTest, ShowsTheRecordAndSavesItBackExactly) {
    library().securityTablePresent = true;
    recordForm->openSecurityManager();
    showItem(14); // has keywords and excluded users in the sample
    toField("InvoiceNo");
    EXPECT_EQ(form().FieldValue().toString(), "INV-0000014");
    EXPECT_EQ(listEntries("Categories").join(';'),
              column("SELECT Categories FROM Invoices WHERE itemid = 14").first());
    EXPECT_EQ(shown(keywords, "Keywords"),
              column("SELECT keyword FROM keywords WHERE itemid = 14 ORDER BY keyword"));
    EXPECT_EQ(shown(users, "lstAscUsers"),
              column("SELECT UserName FROM KTUsers WHERE UserID IN (SELECT UserID FROM "
                     "KTSecurity WHERE itemid = 14) ORDER BY UserName"));
    EXPECT_FALSE(shown(users, "lstAscUsers").isEmpty());

    setField("InvoiceNo", "  INV-EDIT  ");
    setField("Amount", 4321);
    setField("Paid", QVariant()); // unset: stored as False
    setField("Notes", "Checked.");
    toField("Categories");
    form().ClearFieldList();
    form().AddFieldListItem("Travel");
    form().AddFieldListItem("Hardware");
    pick(keywords, {"urgent", "audit"});
    pick(users, {"bob", "dave"});
    recordForm->SaveData();

    EXPECT_EQ(column("SELECT InvoiceNo || '|' || Amount || '|' || Paid || '|' || Categories || "
                     "'|' || Notes FROM Invoices WHERE itemid = 14"),
              QStringList{"INV-EDIT|4321|0|Travel;Hardware|Checked."});
    EXPECT_EQ(column("SELECT keyword FROM keywords WHERE itemid = 14 ORDER BY keyword"),
              (QStringList{"audit", "urgent"}));
    EXPECT_EQ(column("SELECT UserID FROM KTSecurity WHERE itemid = 14 ORDER BY UserID"),
              (QStringList{"3", "5"}));
    ASSERT_EQ(hitList->audits.size(), 1);
    EXPECT_EQ(hitList->audits[0].action + hitList->audits[0].description,
              "EditingRecord Data for Item: 14");
    EXPECT_EQ(hitList->audits[0].itemIds, QList<qint32>{14});
}

TEST_F(RecordFormTest, TruncatesTooLongTextWithOneMessage) {
    // A form that lets 40 characters into the 20-character column.
    QFile file(sample.formDefinitionPath());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    QString xml = QString::fromUtf8(file.readAll());
    const qsizetype at = xml.indexOf("<length>20</length>", xml.indexOf(">InvoiceNo<"));
    ASSERT_TRUE(file.resize(0) && file.write(xml.replace(at, 19, "<length>40</length>").toUtf8()));
    file.close();
    start();

    showItem(3);
    setField("InvoiceNo", "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123");
    ui().answerMessage(MessageAnswer::Ok);
    recordForm->SaveData();
    EXPECT_EQ(promptTexts(ui()),
              QStringList{promptText("", "The data in Field InvoiceNo will be truncated to  20",
                                     MessageStyle::OkOnly)});
    EXPECT_EQ(column("SELECT InvoiceNo FROM Invoices WHERE itemid = 3"),
              QStringList{"ABCDEFGHIJKLMNOPQRST"});
}

TEST_F(RecordFormTest, ASaveAfterAnotherUsersChangeReportsItAndWritesNothingOfTheRow) {
    showItem(5);
    // Another user, on a connection of their own, changes the record shown here.
    Connection other;
    other.open(sample.connectionText());
    other.execute("UPDATE Invoices SET InvoiceNo = 'THEIRS' WHERE itemid = 5");
    const QStringList theirRow =
        column("SELECT InvoiceNo || '|' || COALESCE(Notes, '') FROM Invoices WHERE itemid = 5");

    setField("Notes", "Mine.");
    ui().answerMessage(MessageAnswer::Ok);
    recordForm->SaveData();
    EXPECT_EQ(promptTexts(ui()),
              QStringList{promptText("SaveData",
                                     "Row cannot be located for updating. Some values may have "
                                     "been changed since it was last read. : -2147217864",
                                     MessageStyle::OkOnly | MessageStyle::Critical)});
    EXPECT_EQ(column("SELECT InvoiceNo || '|' || COALESCE(Notes, '') FROM Invoices WHERE "
                     "itemid = 5"),
              theirRow);
    EXPECT_TRUE(hitList->audits.isEmpty());

    // Shown again, the other user's values are the ones edited: the save goes through, and a
    // second save of the same form, shown again or not, is no conflict with the first.
    hitList->requeryList();
    showItem(5);
    setField("Notes", "Mine.");
    recordForm->SaveData();
    recordForm->SaveData();
    recordForm->UpdateForm(); // from the result as queried, before the save
    setField("Notes", "Mine.");
    recordForm->SaveData();
    EXPECT_EQ(ui().prompts().size(), 1);
    EXPECT_EQ(column("SELECT InvoiceNo || '|' || Notes FROM Invoices WHERE itemid = 5"),
              QStringList{"THEIRS|Mine."});
}

TEST_F(RecordFormTest, AnInvalidFormWritesNothingAndRaisesNothing) {
    SpyCompanions spies(SpyCompanions::Security);
    library().securityTablePresent = true;
    showItem(14);
    const QStringList before = column("SELECT keyword FROM keywords WHERE itemid = 14");
    setField("InvoiceNo", QString()); // required
    setField("Notes", "Changed");
    pick(keywords, {"tax"});
    recordForm->SaveData();

    EXPECT_EQ(column("SELECT InvoiceNo FROM Invoices WHERE itemid = 14 AND COALESCE(Notes, '') <> "
                     "'Changed'"),
              QStringList{"INV-0000014"});
    EXPECT_EQ(column("SELECT keyword FROM keywords WHERE itemid = 14"), before);
    EXPECT_TRUE(spies.calls().isEmpty());
    EXPECT_TRUE(hitList->audits.isEmpty());
}

TEST_F(RecordFormTest, AListFieldShowsEachEntryAndSavesBackUnchanged) {
    for (const QString& stored : {QStringLiteral("a;b"), QStringLiteral("a;")}) {
        hitList->connection().execute("UPDATE Invoices SET Categories = '" + stored +
                                      "' WHERE itemid = 7");
        hitList->requeryList();
        showItem(7);
        EXPECT_EQ(listEntries("Categories"), stored.split(';'));
        recordForm->SaveData();
        EXPECT_EQ(column("SELECT Categories FROM Invoices WHERE itemid = 7"), QStringList{stored});
    }
}

TEST_F(RecordFormTest, TheNextRefreshPollsForTheWrittenSecurityRows) {
    auto watched = std::make_unique<SleepWatchingUi>();
    SleepWatchingUi& sleeper = *watched;
    struct Restore {
        std::unique_ptr<UiServices> previous;
        ~Restore() { installUiServices(std::move(previous)); }
    } restore{installUiServices(std::move(watched))};
    SpyCompanions spies(SpyCompanions::Security); // records the calls, writes no rows
    library().securityTablePresent = true;
    recordForm->openSecurityManager();
    QStringList progressSeen;
    sleeper.onSleep = [&](int) {
        const Progressbar* progress = Progressbar::current();
        if (progress && progress->isVisible())
            progressSeen << progress->windowTitle() + ' ' + QString::number(progress->value());
    };

    // The rows never come: five polls, then the rows as they are.
    showItem(1);
    pick(users, {"bob", "carol"});
    recordForm->SaveData();
    EXPECT_EQ(
        spies.callsStartingWith("VXSecurity.AddItemSecurity"),
        (QStringList{"VXSecurity.AddItemSecurity(3, 1)", "VXSecurity.AddItemSecurity(4, 1)"}));
    recordForm->UpdateForm();
    EXPECT_EQ(sleeper.sleeps(), (QList<int>{1000, 1000, 1000, 1000, 1000}));
    const QString caption = "Updating record please wait ...";
    EXPECT_EQ(progressSeen, (QStringList{caption + " 0", caption + " 0", caption + " 20",
                                         caption + " 40", caption + " 60"}));
    EXPECT_FALSE(Progressbar::current()->isVisible());
    recordForm->UpdateForm(); // the flag is cleared
    EXPECT_EQ(sleeper.sleeps().size(), 5);

    // The manager's rows show up during the second second: the poll stops there.
    pick(users, {"bob", "carol"});
    recordForm->SaveData();
    sleeper.onSleep = [&](int count) {
        if (count == 7) {
            hitList->connection().execute("INSERT INTO KTSecurity (itemid, UserID) VALUES (1, 3)");
            hitList->connection().execute("INSERT INTO KTSecurity (itemid, UserID) VALUES (1, 4)");
        }
    };
    recordForm->UpdateForm();
    EXPECT_EQ(sleeper.sleeps().size(), 7);
    EXPECT_EQ(shown(users, "lstAscUsers"), (QStringList{"bob", "carol"}));
}

} // namespace
} // namespace vx::test
