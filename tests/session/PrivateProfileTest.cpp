#include "session/PrivateProfile.h"

#include "data/Error.h"
#include "session/GroupConnection.h"
#include "session/HandOverFile.h"
#include "session/SystemFolder.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace vx;

namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(PrivateProfile, ReadsWithThePlatformsRules) {
    test::TestEnvironment env;
    const QString ini = env.writeFile("group.ini", "; a comment\r\n"
                                                   "[Other]\r\n"
                                                   "Group=wrong\r\n"
                                                   "  [ DataLinks ]  \r\n"
                                                   ";Group=commented\r\n"
                                                   "  GROUP  =   \"C:\\links\\inv.udl\"  \r\n"
                                                   "Single='x'\r\n"
                                                   "Mixed=\"y'\r\n"
                                                   "Empty=\r\n"
                                                   "Group=second\r\n");
    EXPECT_EQ(readPrivateProfileString(ini, "datalinks", "group", "d"), "C:\\links\\inv.udl");
    EXPECT_EQ(readPrivateProfileString(ini, "DATALINKS", "single", "d"), "x");
    EXPECT_EQ(readPrivateProfileString(ini, "datalinks", "mixed", "d"), "\"y'");
    EXPECT_EQ(readPrivateProfileString(ini, "datalinks", "empty", "d"), "");
    EXPECT_EQ(readPrivateProfileString(ini, "datalinks", "missing", "dflt  "), "dflt");
    EXPECT_EQ(readPrivateProfileString(ini, "nosection", "group", "d"), "d");
    EXPECT_EQ(readPrivateProfileString(env.filePath("absent.ini"), "datalinks", "group", "d"), "d");
    EXPECT_EQ(readPrivateProfileString(ini, "other", "group", "", 4), "wro");
    EXPECT_EQ(privateProfileKeys(ini, "datalinks"),
              QStringList({"GROUP", "Single", "Mixed", "Empty", "Group"}));
    EXPECT_TRUE(privateProfileKeys(ini, "none").isEmpty());

    // UTF-16 with bare line feeds.
    QByteArray utf16("\xFF\xFE");
    const QString text = "[S]\nName=Zoë\n";
    utf16.append(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    EXPECT_EQ(readPrivateProfileString(env.writeFile("u16.ini", utf16), "s", "name", ""), "Zoë");
}

TEST(PrivateProfile, WriteKeepsEverythingElseInPlace) {
    test::TestEnvironment env;
    const QString ini = env.writeFile("lib.ini", "; catalog\n[A]\nx=1\ny=2\n\n[B]\nz=3\n");
    writePrivateProfileString(ini, "a", "X", "10"); // existing key, other case
    writePrivateProfileString(ini, "A", "w", "4");  // new key goes after the section's last key
    writePrivateProfileString(ini, "C", "v", "5");  // new section at the end
    EXPECT_EQ(readAll(ini), "; catalog\r\n[A]\r\nx=10\r\ny=2\r\nw=4\r\n\r\n[B]\r\nz=3\r\n"
                            "\r\n[C]\r\nv=5\r\n");
    writePrivateProfileString(env.filePath("new/dir/fresh.ini"), "S", "k", "v");
    EXPECT_EQ(readAll(env.filePath("new/dir/fresh.ini")), "[S]\r\nk=v\r\n");
    EXPECT_THROW(writePrivateProfileString(ini, "S", "k", "two\nlines"), Error);
    EXPECT_THROW(writePrivateProfileString(ini, "S", "a=b", "v"), Error);
    EXPECT_THROW(writePrivateProfileString(ini, "", "k", "v"), Error);
}

TEST(GroupConnection, BuildsTheConnectionTextFromTheInitFile) {
    test::TestEnvironment env;
    const QString suffix = ";Jet OLEDB:Database Password = ' morvantel'";
    const QString ini =
        env.writeFile("Invoices.ini", "[datalinks]\r\nGroup=/data/Invoices.udl\r\n");
    EXPECT_EQ(groupConnectionText(ini), "File Name=/data/Invoices.udl" + suffix);

    const QString noSection = env.writeFile("bare.ini", "[other]\r\nGroup=/x.udl\r\n");
    EXPECT_EQ(groupConnectionText(noSection), "File Name=" + suffix);
    EXPECT_EQ(groupConnectionText(env.filePath("missing.ini")), "File Name=" + suffix);

    const QString longPath = "/" + QString(299, u'p');
    const QString longIni = env.writeFile("long.ini", "[datalinks]\nGroup=" + longPath.toUtf8());
    EXPECT_EQ(groupConnectionText(longIni), "File Name=" + longPath.left(259) + suffix);
}

TEST(HandOverFile, ReadsValuesAndIsDeletedOnlyWhenAsked) {
    test::TestEnvironment env;
    EXPECT_EQ(handOverFilePath("~znindex"), env.systemFolder() + "/zn5000/~znindex");
    EXPECT_EQ(libraryCatalogPath(), env.systemFolder() + "/zn5000/vxlibraries.ini");

    HandOverFile missing(handOverFilePath("~znfind"), "Lib-Invoices");
    EXPECT_FALSE(missing.exists());
    EXPECT_FALSE(missing.value("Customer").has_value());

    const QByteArray longValue(300, 'v');
    env.writeFile("system/zn5000/~znindex", "[Lib-Invoices]\r\nCustomer=Acme\r\nAmount=\r\n"
                                            "Notes=" +
                                                longValue + "\r\n[Lib-Other]\r\nTotal=9\r\n");
    HandOverFile file(handOverFilePath("~znindex"), "lib-invoices");
    ASSERT_TRUE(file.exists());
    EXPECT_EQ(file.value("CUSTOMER"), QString("Acme"));
    EXPECT_FALSE(file.value("Amount").has_value()) << "an empty value counts as absent";
    EXPECT_FALSE(file.value("Total").has_value()) << "keys of other sections are not read";
    EXPECT_EQ(file.value("Notes")->size(), 259);
    EXPECT_TRUE(file.exists()) << "reading never deletes";
    EXPECT_TRUE(file.remove());
    EXPECT_FALSE(file.exists());
    EXPECT_TRUE(file.remove()) << "removing a file that is gone is not a failure";
}
