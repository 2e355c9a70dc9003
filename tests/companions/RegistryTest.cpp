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
        EXPECT_TRUE(error.description().contains(QStringLiteral("\"VXNowhere.VXNothing\"")));
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
