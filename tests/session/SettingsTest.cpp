#include "session/Settings.h"

#include "data/Error.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace vx;

TEST(Settings, DefaultsAndCaseInsensitiveNames) {
    test::TestEnvironment env;
    EXPECT_EQ(getSetting("Invoices", "VXSortOrder", "ITEMID"), "ITEMID");
    EXPECT_EQ(getSetting("Invoices", "Total"), "");

    saveSetting("Invoices", "VXSortOrder", "Customer");
    saveSetting("INVOICES", "vxsortorder", "Amount"); // same section and key
    saveSetting("invoices", "VXSortBy", "DESC");
    EXPECT_EQ(getSetting("iNvOiCeS", "VXSORTORDER", "ITEMID"), "Amount");
    EXPECT_EQ(settingKeys("INVOICES").size(), 2);
    EXPECT_TRUE(settingKeys("INVOICES").contains("VXSortOrder")) << "first spelling kept";
    EXPECT_EQ(QDir(env.settingsFolder()).entryList({"*.ini"}), QStringList{"VXUILib.ini"});
}

// A sort writes two values at once, and reading widths takes the whole section in one go; a
// write that changes nothing must not rewrite the store (a comment added by hand survives).
TEST(Settings, SectionsAreReadAndWrittenWhole) {
    test::TestEnvironment env;
    saveSettings("Invoices", {{"VXSortOrder", "Customer"}, {"VXSortBy", "DESC"}});
    saveSetting("INVOICES", "Amount", "1500");
    const QHash<QString, QString> section = getSectionSettings("invoices");
    EXPECT_EQ(section.size(), 3);
    EXPECT_EQ(section.value("vxsortorder"), "Customer");
    EXPECT_EQ(section.value("amount"), "1500");
    EXPECT_TRUE(getSectionSettings("Other").isEmpty());

    QFile store(QDir(env.settingsFolder()).filePath("VXUILib.ini"));
    ASSERT_TRUE(store.open(QIODevice::Append));
    store.write("; kept\n");
    store.close();
    saveSettings("Invoices", {{"vxsortorder", "Customer"}, {"VXSortBy", "DESC"}});
    ASSERT_TRUE(store.open(QIODevice::ReadOnly));
    EXPECT_TRUE(store.readAll().contains("; kept")) << "an unchanged value rewrote the store";
    store.close();
    saveSettings("Invoices", {{"VXSortBy", "ASC"}});
    EXPECT_EQ(getSetting("Invoices", "VXSortBy"), "ASC");
    EXPECT_THROW(saveSettings("Invoices", {{"", "x"}}), Error);
}

TEST(Settings, AnyNameAndValueRoundTrips) {
    test::TestEnvironment env;
    const QStringList names{"1",   "2",   "3@",      "Customer Name", "a/b",     "c\\d",
                            "50%", "%2F", "General", "Ünïcode",       " padded "};
    const QStringList values{"select a, b from t where c = 'x'",
                             "@at",
                             "\"quoted\"",
                             "  blanks  ",
                             "semi;colon",
                             "line\nbreak",
                             "",
                             "1000",
                             "back\\slash",
                             "%25",
                             "=eq"};
    for (qsizetype i = 0; i < names.size(); ++i)
        saveSetting("Fav/Group " + names[i], names[i], values[i]);
    for (qsizetype i = 0; i < names.size(); ++i) {
        EXPECT_EQ(getSetting("fav/group " + names[i], names[i], "default"), values[i])
            << names[i].toStdString();
        EXPECT_EQ(settingKeys("Fav/Group " + names[i]), QStringList{names[i]});
    }
    // "a/b" must not have become a nested group of "Fav".
    EXPECT_EQ(getSetting("Fav", "Group a", "none"), "none");
    EXPECT_TRUE(settingKeys("Fav").isEmpty());
}

TEST(Settings, DeletingSectionsAndKeys) {
    test::TestEnvironment env;
    saveSetting("Invoices", "Total", "2");
    saveSetting("Invoices", "1", "Open");
    saveSetting("Invoices", "Open", "select * from Invoices");
    saveSetting("Orders", "Total", "1");

    deleteSetting("INVOICES", "open");
    EXPECT_EQ(getSetting("Invoices", "Open", "gone"), "gone");
    EXPECT_EQ(getSetting("Invoices", "1"), "Open");

    deleteSetting("invoices");
    EXPECT_TRUE(settingKeys("Invoices").isEmpty());
    EXPECT_EQ(getSetting("Invoices", "Total", "0"), "0");
    EXPECT_EQ(getSetting("Orders", "Total", "0"), "1") << "other sections stay";

    // Deleting what is not there is quietly nothing.
    EXPECT_NO_THROW(deleteSetting("Invoices"));
    EXPECT_NO_THROW(deleteSetting("Nothing", "Here"));
    EXPECT_THROW(saveSetting("", "key", "v"), Error);
    EXPECT_THROW(saveSetting("Section", "", "v"), Error);
}

TEST(Settings, StoreFollowsTheDirectorySetting) {
    test::TestEnvironment env;
    saveSetting("Settings", "strCDLabel", "Archive");
    const QString other = env.filePath("elsewhere");
    const QString previous = setSettingsDirectory(other);
    EXPECT_EQ(previous, env.settingsFolder());
    EXPECT_EQ(getSetting("Settings", "strCDLabel", "Veltran"), "Veltran");
    saveSetting("Settings", "strCDLabel", "Other");
    setSettingsDirectory(previous);
    EXPECT_EQ(getSetting("Settings", "strCDLabel", "Veltran"), "Archive");
    EXPECT_TRUE(QFile::exists(other + "/VXUILib.ini"));
}
