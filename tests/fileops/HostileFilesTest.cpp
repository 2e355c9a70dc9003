#include "FileOpsFixture.h"
#include "core/SampleContent.h"
#include "data/Error.h"
#include "operations/DocumentOperations.h"
#include "operations/StoredFileName.h"
#include "operations/VolumeLabelReader.h"
#include "portable/FileCopier.h"
#include "session/ShownText.h"
#include "session/UiServices.h"
#include "session/UserDirectory.h"

#include <QFileInfo>
#include <sys/stat.h>

namespace vx::test {
namespace {

// What a user who can write any row, or plant files in a shared folder, hands the others.

TEST(HostileStoredNames, NamesThatMeanAnotherFileSomewhereAreRefused) {
    const QString longName = QString(256, u'a');
    const QString longInBytes = QString(86, QChar(0x20ac)); // 258 bytes in UTF-8
    for (const QString& name :
         {QStringLiteral("evil\x1b]0;owned\x07.txt"),
          QStringLiteral("a\x7f"
                         "b.txt"),
          QStringLiteral("next\u0085line.txt"), longName, longInBytes, QStringLiteral("CON"),
          QStringLiteral("nul.txt"), QStringLiteral("Com1.log"), QStringLiteral("lpt9"),
          QStringLiteral("report."), QStringLiteral("report.txt ")}) {
        EXPECT_FALSE(storedNameProblem(name).isEmpty()) << shownText(name).toStdString();
        EXPECT_FALSE(pathInsideFolder(QStringLiteral("/data/chosen"), name));
    }
    for (const QString& name : {QString(255, u'a'), QString(85, QChar(0x20ac)),
                                QStringLiteral("CONSOLE.txt"), QStringLiteral("com10.txt"),
                                QStringLiteral("nullify.pdf"), QStringLiteral("\u202etxt.exe")})
        EXPECT_TRUE(storedNameProblem(name).isEmpty()) << shownText(name).toStdString();
}

TEST(HostileStoredNames, ProgramsAreNotHandedToTheDesktopToOpen) {
    for (const char* name :
         {"invoice.pdf.exe", "SCAN.EXE", "x.exe.", "x.exe . ", "run.desktop", "shortcut.lnk",
          "macro.vbs", "setup.msi", "tool.jar", "a.ps1", "install.sh", "page.hta"})
        EXPECT_FALSE(openingProblem(QStringLiteral("/store/") + QLatin1String(name)).isEmpty())
            << name;
    for (const char* name :
         {"report.pdf", "notes.txt", "archive.tar.gz", "exe", "scan.tif", "exe.pdf", "letter.docx"})
        EXPECT_TRUE(openingProblem(QStringLiteral("/store/") + QLatin1String(name)).isEmpty())
            << name;
}

TEST(HostileStoredNames, MessagesShowEscapesAndCutLongValues) {
    const struct {
        QString value;
        QString shown;
    } cases[] = {
        {QStringLiteral("plain name.txt"), QStringLiteral("plain name.txt")},
        {QStringLiteral("a\x1b[2Jb"), QStringLiteral("a\\x1b[2Jb")},
        {QStringLiteral("line\r\nbreak\t"), QStringLiteral("line\\r\\nbreak\\t")},
        {QStringLiteral("\u202etxt.exe"), QStringLiteral("\\u202etxt.exe")},
        {QStringLiteral("del\x7f c1\u0085"), QStringLiteral("del\\x7f c1\\x85")},
        {QStringLiteral("caf\u00e9 \U0001F600"), QStringLiteral("caf\u00e9 \U0001F600")},
        {QString(1, QChar(0xd800)) + u'x', QStringLiteral("\\ud800x")},
    };
    for (const auto& [value, shown] : cases)
        EXPECT_EQ(shownText(value), shown) << shown.toStdString();
    EXPECT_EQ(shownText(QString(5000, u'x')), QString(120, u'x') + QChar(0x2026));
    EXPECT_EQ(shownText(QString(10, u'x'), 10), QString(10, u'x'));
}

TEST(HostileStoredNames, OnlyTheSameNameAgainMayClaimAFoldedName) {
    FolderNames names;
    EXPECT_TRUE(names.claim(QStringLiteral("Invoice.txt")));
    EXPECT_TRUE(names.claim(QStringLiteral("Invoice.txt")));
    EXPECT_FALSE(names.claim(QStringLiteral("INVOICE.TXT")));
    EXPECT_FALSE(names.claim(QStringLiteral("invoice.txt")));
    EXPECT_TRUE(names.claim(QStringLiteral("\u00c4rger.txt")));
    EXPECT_FALSE(names.claim(QStringLiteral("\u00e4RGER.TXT"))) << "beyond ASCII too";
    EXPECT_TRUE(names.claim(QStringLiteral("caf\u00e9.txt")));
    EXPECT_FALSE(names.claim(QStringLiteral("cafe\u0301.txt"))) << "the same name composed";
}

// Copy and move with stored names and planted files in the sample's document folder.
class HostileFilesTest : public FileOpsFixture {
protected:
    QString chosen;
    QString outside;
    QString secret;

    void SetUp() override {
        chosen = makeFolder(QStringLiteral("chosen"));
        outside = makeFolder(QStringLiteral("home"));
        secret = environment.writeFile(QStringLiteral("home/secret.key"), "private key");
    }

    void setStoredName(qint32 itemId, const QString& name) {
        execute(QStringLiteral("UPDATE ktfile SET fname = '%1' WHERE itemid = %2")
                    .arg(QString(name).replace(u'\'', QStringLiteral("''")))
                    .arg(itemId));
    }

    // Item `itemId`'s document file becomes a link to `target`.
    void plantLink(qint32 itemId, const QString& target) {
        const QString file = documentPath(mainFileName(itemId));
        ASSERT_TRUE(QFile::remove(file));
        ASSERT_TRUE(QFile::link(target, file));
    }

    QString lastMessage() const { return ui().lastPrompt() ? ui().lastPrompt()->text : QString(); }
};

TEST_F(HostileFilesTest, ALinkPlantedInTheDocumentFolderIsNeitherCopiedNorMoved) {
    plantLink(1, secret);
    plantLink(3, documentPath(mainFileName(5))); // a link beside it stays the repository's
    hitList.selection = {1, 3};

    ui().answerFolder(chosen).answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(copyDocuments(hitList));
    EXPECT_EQ(QDir(chosen).entryList(QDir::Files), QStringList{mainFileName(3)});
    EXPECT_EQ(contentsOf(chosen + u'/' + mainFileName(3)),
              contentsOf(documentPath(mainFileName(5))));
    EXPECT_TRUE(lastMessage().contains(QStringLiteral("Item 1: \"%1\"").arg(mainFileName(1))))
        << lastMessage().toStdString();
    EXPECT_TRUE(lastMessage().contains(QStringLiteral("symbolic link leading out")));
    EXPECT_FALSE(lastMessage().contains(QStringLiteral("Item 3")));

    VolumeLabelOverride label([](const QString&) { return QStringLiteral("NEWDISK"); });
    hitList.selection = {1};
    ui().answerFolder(chosen).answerMessage(MessageAnswer::Yes).answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(moveFilesAndUpdateVolume(hitList));
    EXPECT_FALSE(QFileInfo::exists(chosen + u'/' + mainFileName(1)));
    EXPECT_TRUE(QFileInfo(documentPath(mainFileName(1))).isSymLink());
    EXPECT_EQ(contentsOf(secret), "private key");
    EXPECT_NE(fileValue(1, QStringLiteral("volume")).toString(), QStringLiteral("NEWDISK"));
}

TEST_F(HostileFilesTest, NamesEqualButForCaseAreWrittenOnceAndTheOthersReported) {
    setStoredName(1, QStringLiteral("Dup.txt"));
    setStoredName(3, QStringLiteral("DUP.txt"));
    setStoredName(5, QStringLiteral("Dup.txt")); // the same name again is no collision
    hitList.selection = {1, 3, 5};
    hitList.locate = [this](qint32 itemId, const QString&, const QString&) {
        return documentPath(mainFileName(itemId));
    };
    ui().answerFolder(chosen).answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(copyDocuments(hitList));
    EXPECT_EQ(QDir(chosen).entryList(QDir::Files), QStringList{QStringLiteral("Dup.txt")});
    EXPECT_EQ(contentsOf(chosen + QStringLiteral("/Dup.txt")),
              contentsOf(documentPath(mainFileName(5))));
    EXPECT_TRUE(lastMessage().contains(QStringLiteral("Item 3: \"DUP.txt\" (another document")))
        << lastMessage().toStdString();
    EXPECT_EQ(hitList.locatedItemIds, (QList<qint32>{1, 5})) << "skipped before the host is asked";
}

TEST_F(HostileFilesTest, TheSkipMessageShowsHostileNamesEscapedAndShort) {
    const QString terminal = QStringLiteral("x\x1b]0;owned\x07\r\nItem 9: \"fine.txt\"");
    const QString huge = QString(250, u'/'); // as long as the column takes
    setStoredName(1, terminal);
    setStoredName(3, huge);
    hitList.selection = {1, 3};
    ui().answerFolder(chosen).answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(copyDocuments(hitList));
    const QString text = lastMessage();
    EXPECT_TRUE(text.contains(QStringLiteral("Item 1: \"x\\x1b]0;owned\\x07\\r\\nItem 9:")))
        << text.toStdString();
    for (const QChar c : text)
        EXPECT_TRUE(c.unicode() >= 0x20 || c == u'\r' || c == u'\n') << int(c.unicode());
    EXPECT_EQ(text.count(QStringLiteral("\r\nItem ")), 2) << "no line of the attacker's own";
    EXPECT_LT(text.size(), 700);
    EXPECT_TRUE(QDir(chosen).isEmpty());
}

// The export's copier writes into folders that may hold what someone else put there.
TEST_F(HostileFilesTest, TheExportCopierNeitherFollowsNorWaitsOnPlantedNames) {
    const QString source = environment.writeFile(QStringLiteral("source.txt"), "document");
    const QString linked = chosen + QStringLiteral("/linked.txt");
    ASSERT_TRUE(QFile::link(secret, linked));
    const QString pipe = chosen + QStringLiteral("/pipe.txt");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    FileCopier copier;
    const struct {
        QString from;
        QString to;
        QString reason;
    } refused[] = {
        {source, linked, QStringLiteral("the name there is a symbolic link")},
        {source, pipe, QStringLiteral("the name there is not a plain file")},
        {pipe, chosen + QStringLiteral("/copy.txt"), QStringLiteral("File not found: ")},
    };
    for (const auto& [from, to, reason] : refused) {
        try {
            copier.copyOverwriting(from, to);
            ADD_FAILURE() << "copied to " << to.toStdString();
        } catch (const Error& error) {
            EXPECT_TRUE(error.description().contains(reason)) << error.description().toStdString();
        }
    }
    EXPECT_EQ(contentsOf(secret), "private key");
    EXPECT_FALSE(QFileInfo::exists(chosen + QStringLiteral("/copy.txt")));
    copier.copyOverwriting(source, chosen + QStringLiteral("/plain.txt"));
    EXPECT_EQ(contentsOf(chosen + QStringLiteral("/plain.txt")), "document");
}

} // namespace
} // namespace vx::test

namespace vx::test {
namespace {

// A name that is SQL matches no user rather than the first one.
TEST_F(HostileFilesTest, AUserNameIsLookedUpAsTextNeverAsSql) {
    const QString second = repo::sample::userNames().at(1);
    EXPECT_EQ(userIdForName(hitList.connection(), second), 2);
    ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    EXPECT_EQ(userIdForName(hitList.connection(), second + QStringLiteral("' OR '1'='1")), 0);
    EXPECT_EQ(userIdForName(hitList.connection(), QStringLiteral("x' OR UserID = 2 OR '")), 0);
    EXPECT_EQ(ui().prompts().size(), 2) << "both reported as unknown";
}

} // namespace
} // namespace vx::test
