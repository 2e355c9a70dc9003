#include "portable/ReadMeWriter.h"
#include "portable/VeltraneFolders.h"
#include "session/LibraryState.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace vx;
using namespace vx::test;

namespace {

QStringList readMe(const TestEnvironment& environment) {
    QFile file(environment.filePath("ReadMe.txt"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split("\r\n");
    if (lines.last().isEmpty())
        lines.removeLast(); // after the last line's break
    return lines;
}

TEST(ReadMeTest, FolderAndCdFilesHoldTheirLines) {
    TestEnvironment environment;
    ASSERT_TRUE(WriteReadMe(environment.path(), "ExportToFolder", "DATA"));
    QStringList lines = readMe(environment);
    ASSERT_EQ(lines.size(), 13);
    EXPECT_EQ(lines[3], "Export To FOLDER (Full-Export)");
    EXPECT_EQ(lines[9], "Veltrane [Export To FOLDER (Full-Export)]");
    EXPECT_EQ(lines[12], "============================");

    ASSERT_TRUE(WriteReadMe(environment.path(), "ExportToCD", "Veltran0000"));
    lines = readMe(environment);
    ASSERT_EQ(lines.size(), 22);
    EXPECT_EQ(lines[3], "Export To CD (Fixed Size)");
    EXPECT_EQ(lines[9], "In order to use the exported ");
    EXPECT_EQ(lines[14], "(ie. the data in folder Veltran0000");
    EXPECT_EQ(lines[16], "with volume name Veltran0000, etc...)");
    EXPECT_EQ(lines[20], "transferred to a CD.");
    EXPECT_FALSE(lines.join("").contains('\n')); // every line ends in CR LF, none in LF alone

    library().customSize = true;
    EXPECT_EQ(readMeLines("ExportToCD", "X0000", true)[3], "Export To CD (Custom Size)");
    EXPECT_TRUE(environment.ui().prompts().isEmpty());

    environment.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(WriteReadMe(environment.filePath("missing/folder"), "ExportToCD", "V0000"));
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_TRUE(environment.ui().prompts()[0].text.startsWith("Error: -2147467259 - Cannot write"));
    EXPECT_EQ(environment.ui().prompts()[0].title, "WriteReadMe");
    EXPECT_EQ(environment.ui().prompts()[0].icon, MessageStyle::Critical);
}

TEST(VeltraneFoldersTest, RemovesOnlyTheListedFoldersLastFirst) {
    TestEnvironment environment;
    const QString root = environment.filePath("root");
    const QStringList created{root, root + "/V0000", root + "/V0000/Document"};
    ASSERT_TRUE(QDir().mkpath(created.last()));
    for (const char* file : {"root/ReadMe.txt", "root/V0000/veltrane.znl",
                             "root/V0000/Document/a.txt", "root/V0000/Document/.hidden"})
        environment.writeFile(file, "x");
    // Not made by the export: kept, and so are the folders holding it.
    environment.writeFile("root/V0000/theirs/keep.txt", "k");

    RemoveVeltraneFolders(created, qint16(created.size()));
    EXPECT_FALSE(QFileInfo::exists(root + "/V0000/Document"));
    EXPECT_FALSE(QFileInfo::exists(root + "/V0000/veltrane.znl"));
    EXPECT_FALSE(QFileInfo::exists(root + "/ReadMe.txt"));
    EXPECT_TRUE(QFileInfo::exists(root + "/V0000/theirs/keep.txt"));

    // A count below the list's size leaves the later entries alone.
    environment.writeFile("second/A/f", "f");
    RemoveVeltraneFolders({environment.filePath("second"), environment.filePath("second/A")}, 1);
    EXPECT_TRUE(QFileInfo::exists(environment.filePath("second/A/f")));
}

} // namespace
