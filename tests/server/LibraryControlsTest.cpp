#include "companions/DefaultCompanions.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "server/TypeLibrary.h"
#include "support/TestEnvironment.h"

#include <QMetaClassInfo>
#include <QProcess>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>

namespace {

const QStringList LibraryClasses = {
    "VXUILib.VXDictionary", "VXUILib.VXDocSec",   "VXUILib.VXFavourites", "VXUILib.VXHitList",
    "VXUILib.VXIndex",      "VXUILib.VXKeywords", "VXUILib.VXQuery"};

QString classInfo(const QObject& object, const char* name) {
    const QMetaObject* meta = object.metaObject();
    const int index = meta->indexOfClassInfo(name);
    return index < 0 ? QString() : QString::fromLatin1(meta->classInfo(index).value());
}

// The member name of a dispatch line: "property QString Init [put]" -> "Init",
// "method bool UpdateRecordAPI()" -> "UpdateRecordAPI".
QString memberOf(const QString& line) {
    const QStringList words = line.trimmed().split(u' ', Qt::SkipEmptyParts);
    if (words.size() < 3)
        return {};
    return words.at(2).section(u'(', 0, 0);
}

TEST(LibraryControls, EveryClassNameCreatesItsControlAndUnknownNamesFailClearly) {
    vx::test::TestEnvironment environment;
    vx::registerDefaultCompanions();
    for (const QString& name : LibraryClasses) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(vx::ControlFactory::contains(name));
        EXPECT_TRUE(vx::ControlFactory::classNames().contains(name));
        std::unique_ptr<QWidget> control(vx::ControlFactory::create(name));
        ASSERT_NE(control, nullptr);
        EXPECT_EQ(classInfo(*control, "ClassName"), name);
        EXPECT_EQ(QString::fromLatin1(control->metaObject()->className()),
                  "vx::" + name.section(u'.', 1));
        EXPECT_FALSE(classInfo(*control, "Interface").isEmpty());
    }
    // Class names compare without regard to case.
    std::unique_ptr<QWidget> lower(vx::ControlFactory::create("vxuilib.vxkeywords"));
    EXPECT_EQ(classInfo(*lower, "ClassName"), "VXUILib.VXKeywords");

    for (const QString& unknown :
         {QStringLiteral("VXUILib.VXNothing"), QStringLiteral("VXIndex"), QString()}) {
        try {
            vx::ControlFactory::create(unknown);
            ADD_FAILURE() << "created " << unknown.toStdString();
        } catch (const vx::Error& error) {
            EXPECT_EQ(error.description(),
                      QStringLiteral("Cannot create the control \"%1\": no control of that class "
                                     "name is registered.")
                          .arg(unknown));
        }
    }
    EXPECT_TRUE(environment.ui().prompts().isEmpty()) << "creating a control asks nothing";
}

TEST(LibraryControls, TypeLibraryListsVXIndexInDispatchOrderFromLibraryAndTool) {
    const QStringList members = {"Init",         "GroupInitString",    "GroupName",
                                 "GroupID",      "UserName",           "CurItemID",
                                 "CurFileType",  "UserPermission",     "CurrentLibrary",
                                 "DocumentPath", "GetItemID",          "UserIDs",
                                 "RemoteIndex",  "UpdateRecordAPI",    "GetUserId",
                                 "UpdateRecord", "RefreshFormContent", "Refresh",
                                 "Done"};
    const QString text = vx::typeLibraryText(QStringLiteral("VXIndex"));
    EXPECT_EQ(text, vx::typeLibraryText(QStringLiteral("VXUILib.VXIndex")));
    const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 1 + 1 + members.size() + 1 + 2) << text.toStdString();
    EXPECT_EQ(lines[0], "VXIndex (VXUILib.VXIndex)");
    for (int i = 0; i < members.size(); ++i)
        EXPECT_EQ(memberOf(lines[2 + i]), members[i]) << lines[2 + i].toStdString();
    EXPECT_EQ(lines[2].trimmed(), "property QString Init [put]") << "Init is write-only";
    EXPECT_TRUE(lines[12].trimmed().startsWith("property QString GetItemID [get"))
        << lines[12].toStdString();
    EXPECT_EQ(lines[15].trimmed(), "method bool UpdateRecordAPI()");
    EXPECT_EQ(lines[16].trimmed(), "method int GetUserId(QString& strUserName)");
    EXPECT_FALSE(text.contains("missing")) << text.toStdString();
    EXPECT_EQ(lines[lines.size() - 2].trimmed(), "event KeyDown(short& KeyCode, short& Shift)");
    EXPECT_EQ(lines.last().trimmed(), "event CommitIndex()");
    EXPECT_THROW(vx::typeLibraryText(QStringLiteral("VXNothing")), vx::Error);

#ifdef VX_TYPELIB_TOOL
    QProcess tool;
    tool.start(QStringLiteral(VX_TYPELIB_TOOL), {QStringLiteral("VXIndex")});
    ASSERT_TRUE(tool.waitForFinished(60000));
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_EQ(QString::fromUtf8(tool.readAllStandardOutput()).trimmed(), text.trimmed());

    // Without arguments: all seven, none with a missing member, each with its events.
    tool.start(QStringLiteral(VX_TYPELIB_TOOL), {});
    ASSERT_TRUE(tool.waitForFinished(60000));
    const QString all = QString::fromUtf8(tool.readAllStandardOutput());
    for (const QString& name : LibraryClasses)
        EXPECT_TRUE(all.contains(QStringLiteral("(%1)\n").arg(name))) << name.toStdString();
    EXPECT_FALSE(all.contains("missing")) << all.toStdString();
    EXPECT_TRUE(all.contains("event RecordAuditTrail(QString& sAction, QVariantList& colID, "
                             "QString& sDescription)"))
        << all.toStdString();

    tool.start(QStringLiteral(VX_TYPELIB_TOOL), {QStringLiteral("VXNothing")});
    ASSERT_TRUE(tool.waitForFinished(60000));
    EXPECT_EQ(tool.exitCode(), 1);
    EXPECT_TRUE(QString::fromUtf8(tool.readAllStandardError()).contains("VXNothing"));
#endif
}

} // namespace
