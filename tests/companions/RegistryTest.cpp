#include "companions/DefaultCompanions.h"
#include "companions/DynaForm.h"
#include "companions/ItemList.h"
#include "data/Error.h"
#include "session/companions/CompanionRegistry.h"
#include "session/companions/NativeHelpers.h"
#include "support/SpyCompanions.h"
#include "support/TestEnvironment.h"

#include <QWidget>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::SpyCompanions;

TEST(CompanionRegistry, UnknownOrMismatchedClassNamesFailWithTheirName) {
    try {
        createCompanion(QStringLiteral("VXNowhere.VXNothing"));
        FAIL() << "an unknown class name must not create anything";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), CannotCreateObject);
        EXPECT_TRUE(error.description().contains(QStringLiteral("\"VXNowhere.VXNothing\"")))
            << error.description().toStdString();
    }

    // A class registered under a companion's name must implement that companion.
    CompanionOverride wrong(CompanionClass::SqlQuery,
                            [] { return std::unique_ptr<QObject>(std::make_unique<ItemList>()); });
    try {
        createCompanion<VXSQLQuery>(CompanionClass::SqlQuery);
        FAIL() << "an item list is not a query parser";
    } catch (const Error& error) {
        EXPECT_TRUE(error.description().contains(CompanionClass::SqlQuery));
        EXPECT_TRUE(error.description().contains(QStringLiteral("VXSQLQuery")));
    }
}

TEST(CompanionRegistry, HostsReplaceByNameAndOverridesRestore) {
    registerDefaultCompanions();
    auto list = createCompanion<VXItemList>(QStringLiteral("vxintegrate.vxitemlist"));
    EXPECT_NE(qobject_cast<ItemList*>(list.get()), nullptr) << "names ignore letter case";

    {
        SpyCompanions spies(SpyCompanions::ItemList);
        auto spy = createCompanion<VXItemList>(CompanionClass::ItemList);
        EXPECT_NE(qobject_cast<test::SpyItemList*>(spy.get()), nullptr);
        // Only the overridden name changed.
        auto parser = createCompanion<VXSQLQuery>(CompanionClass::SqlQuery);
        EXPECT_EQ(qobject_cast<test::SpySqlQuery*>(parser.get()), nullptr);
    }
    auto restored = createCompanion<VXItemList>(CompanionClass::ItemList);
    EXPECT_NE(qobject_cast<ItemList*>(restored.get()), nullptr);

    // The form is made the child named "Group" of its control.
    QWidget control;
    VXDynaForm* form = createDynaForm(&control);
    EXPECT_EQ(form->parent(), &control);
    EXPECT_EQ(control.findChild<VXDynaForm*>(QStringLiteral("Group")), form);
    EXPECT_NE(qobject_cast<DynaForm*>(form), nullptr);
}

TEST(SpyCompanions, RecordEveryCallInOrderAndAnswerAsTold) {
    SpyCompanions spies;
    spies.answers().selectGroup = false;
    spies.answers().documentIndex = 42;
    spies.answers().failingSecurityUsers = {5};
    spies.answers().securedQuery = QStringLiteral("SECURED");

    auto api = createCompanion<VXScanIndex>(CompanionClass::ScanIndex);
    std::shared_ptr<VXItemList> keywords = createCompanion<VXItemList>(CompanionClass::ItemList);
    auto security = createCompanion<VXSecurity>(CompanionClass::Security);
    auto parser = createCompanion<VXSQLQuery>(CompanionClass::SqlQuery);

    QString library = QStringLiteral("Main");
    QString group = QStringLiteral("Invoices");
    QString column = QStringLiteral("Customer");
    QString keyword = QStringLiteral("urgent");
    QString path = QStringLiteral("/tmp/a.pdf");
    QString user = QStringLiteral("alice");
    api->Init(library);
    api->setRemoteIndex(true);
    EXPECT_FALSE(api->SelectGroup(group));
    api->SetFieldContent(column, QStringLiteral("Acme"));
    column = QStringLiteral("Paid");
    api->SetFieldContent(column, QVariant::fromValue(qint16(0)));
    keywords->AddItem(keyword);
    api->setKeywordsList(keywords);
    EXPECT_EQ(api->DocumentIndex(path, nullptr, user), 42);
    security->setInit(QStringLiteral("/g.ini"));
    qint32 item = 42;
    security->SelectItem(item);
    EXPECT_TRUE(security->AddItemSecurity(3, 42));
    EXPECT_FALSE(security->AddItemSecurity(5, 42));
    qint16 userId = 3;
    EXPECT_EQ(parser->QueryStringWithSecurity(QStringLiteral("SELECT 1"), userId),
              QStringLiteral("SECURED"));

    const QStringList expected{
        "VXScanIndex.Init(Main)",
        "VXScanIndex.RemoteIndex = True",
        "VXScanIndex.SelectGroup(Invoices)",
        "VXScanIndex.SetFieldContent(Customer, Acme)",
        "VXScanIndex.SetFieldContent(Paid, 0)",
        "VXItemList.AddItem(urgent)",
        "VXScanIndex.KeywordsList = VXItemList(urgent)",
        "VXScanIndex.DocumentIndex(/tmp/a.pdf, Nothing, alice)",
        "VXSecurity.Init = /g.ini",
        "VXSecurity.SelectItem(42)",
        "VXSecurity.AddItemSecurity(3, 42)",
        "VXSecurity.AddItemSecurity(5, 42)",
        "VXSQLQuery.QueryStringWithSecurity(SELECT 1, 3)",
    };
    EXPECT_EQ(spies.calls(), expected);
    // The staged value keeps the type it was given (the index control hands a 16-bit 0).
    auto* spyApi = spies.lastScanIndex();
    ASSERT_NE(spyApi, nullptr);
    EXPECT_EQ(spyApi->fieldContents().at(1).second.typeId(), QMetaType::Short);

    // A failure set for a member is raised after the call is logged.
    spies.answers().failures.insert(QStringLiteral("VXSecurity.KillItem"),
                                    QStringLiteral("disk full"));
    spies.clearCalls();
    EXPECT_THROW(security->KillItem(), Error);
    EXPECT_EQ(spies.calls(), QStringList{"VXSecurity.KillItem()"});
}

TEST(SpyCompanions, FormWalksItsFieldsAndKeepsWrites) {
    SpyCompanions spies(SpyCompanions::DynaForm);
    spies.answers().fields = {{"Customer", "Customer", {}, {}},
                              {"Categories", "Categories", {}, {"a", "b"}}};
    QWidget control;
    VXDynaForm* form = createDynaForm(&control);
    QString path = QStringLiteral("x.xml");
    EXPECT_TRUE(form->LoadForm(path));
    QStringList seen;
    for (form->MoveFirstField(); !form->FieldEOF(); form->MoveNextField()) {
        seen << form->FieldName();
        for (form->MoveFirstListItem(); form->ListItemPresent(); form->MoveNextListItem())
            seen << form->ListItemText();
    }
    EXPECT_EQ(seen, (QStringList{"Customer", "Categories", "a", "b"}));
    form->MoveFirstField();
    form->setFieldValue(QStringLiteral("Acme"));
    EXPECT_EQ(form->FieldValue().toString(), QStringLiteral("Acme"));
    EXPECT_EQ(spies.callsWithoutReads(),
              (QStringList{"VXDynaForm.LoadForm(x.xml)", "VXDynaForm.MoveFirstField()",
                           "VXDynaForm.MoveFirstListItem()", "VXDynaForm.MoveNextField()",
                           "VXDynaForm.MoveFirstListItem()", "VXDynaForm.MoveNextListItem()",
                           "VXDynaForm.MoveNextListItem()", "VXDynaForm.MoveNextField()",
                           "VXDynaForm.MoveFirstField()", "VXDynaForm.FieldValue = Acme"}));
}

TEST(NativeHelpers, BrowsePathFillsTheBufferLikeA260CharacterOne) {
    test::TestEnvironment environment;
    const QString longFolder = QStringLiteral("/") + QString(300, QLatin1Char('d'));
    environment.ui().answerFolder(longFolder).answerFolder(QString());

    QString buffer = QStringLiteral("untouched");
    const qint16 length = KTBrowsePath(nullptr, buffer, QStringLiteral("Pick"));
    EXPECT_EQ(length, 259);
    EXPECT_EQ(buffer, longFolder.left(259));
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().prompts().first().text, QStringLiteral("Pick"));

    buffer = QStringLiteral("kept");
    EXPECT_EQ(KTBrowsePath(nullptr, buffer, QStringLiteral("Pick")), 0) << "cancelled";
    EXPECT_EQ(buffer, QStringLiteral("kept"));

    // A path that does not exist yet lies on the volume of its folder; labels stop at 11.
    QString label = QStringLiteral("stale");
    const qint16 labelLength =
        KTVolumeLabel(label, environment.filePath(QStringLiteral("no/such/file.txt")));
    EXPECT_EQ(labelLength, label.size());
    EXPECT_LE(label.size(), 11);
    QString rootLabel;
    KTVolumeLabel(rootLabel, environment.path());
    EXPECT_EQ(label, rootLabel);
}
