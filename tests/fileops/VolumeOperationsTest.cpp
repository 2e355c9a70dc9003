#include "FileOpsFixture.h"
#include "operations/DocumentFileMover.h"
#include "operations/DocumentOperations.h"
#include "operations/StoredFileName.h"
#include "operations/VolumeLabelReader.h"
#include "portable/WithoutFileOverride.h"
#include "session/PromptText.h"

#include <QFileInfo>

namespace vx::test {
namespace {

using VolumeOperationsTest = FileOpsFixture;

TEST_F(VolumeOperationsTest, EditingRightAllowsVolumeUpdateButMovingAlsoNeedsDeleting) {
    const QString target = makeFolder(QStringLiteral("target"));
    VolumeLabelOverride label([](const QString&) { return QStringLiteral("NEWVOL"); });
    hitList.selection = {1};

    hitList.permission = 8;
    ui().answerMessage(MessageAnswer::Ok).answerFolder(target).answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(moveFilesAndUpdateVolume(hitList));
    EXPECT_TRUE(updateVolume(hitList));
    EXPECT_EQ(fileValue(1, QStringLiteral("volume")).toString(), QStringLiteral("NEWVOL"));
    hitList.permission = 32;
    EXPECT_FALSE(updateVolume(hitList));
    const int denied = MessageStyle::OkOnly | MessageStyle::Exclamation;
    EXPECT_EQ(
        promptTexts(ui()),
        (QStringList{
            promptText("Permission Denied", "You do not have Editing and Deleting rights.", denied),
            promptText("", "Select the Location for the selected documents", 0),
            promptText("Permission Denied", "You do not have Editing rights.", denied)}));

    hitList.permission = 40;
    ui().answerFolder(target).answerMessage(MessageAnswer::Yes).answerFolder(target);
    EXPECT_TRUE(moveFilesAndUpdateVolume(hitList));
    EXPECT_TRUE(updateVolume(hitList));
    EXPECT_TRUE(QFile::exists(target + QLatin1Char('/') + mainFileName(1)));
}

TEST_F(VolumeOperationsTest, OffTheServerMoveAndVolumeUpdateNameTheServer) {
    hitList.onServer = false;
    hitList.server = QStringLiteral("DOCSRV01");
    hitList.selection = {1, 2};
    ui().answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);

    EXPECT_FALSE(updateVolume(hitList));
    EXPECT_FALSE(moveFilesAndUpdateVolume(hitList));
    EXPECT_EQ(ui().messageTexts(),
              QStringList({QStringLiteral("You can not update the volume from this computer. You "
                                          "can update the volume from the server: DOCSRV01."),
                           QStringLiteral("You can not move documents from this computer. You can "
                                          "move the documents from the server: DOCSRV01.")}));
    EXPECT_EQ(ui().lastPrompt()->title, QStringLiteral("Not on the server."));
    EXPECT_EQ(ui().lastPrompt()->style, MessageStyle::OkOnly | MessageStyle::Information);
    EXPECT_EQ(hitList.events.count(QStringLiteral("GetServerName")), 2);
    EXPECT_EQ(fileValue(1, QStringLiteral("volume")).toString(), QStringLiteral("VOL001"));
}

TEST_F(VolumeOperationsTest, CancellingTheFolderBrowserEndsSilently) {
    hitList.selection = {1, 2};
    ui().answerFolder(QString()).answerFolder(QString()).answerFolder(QString());

    EXPECT_FALSE(updateVolume(hitList));
    EXPECT_FALSE(moveFilesAndUpdateVolume(hitList));
    EXPECT_FALSE(copyDocuments(hitList));
    QStringList texts;
    for (const Prompt& prompt : ui().prompts()) {
        EXPECT_EQ(prompt.kind, Prompt::Kind::FolderBrowser);
        texts << prompt.text;
    }
    EXPECT_EQ(texts, QStringList({"Select the Location for the selected documents",
                                  "Select the Location to move the selected documents to",
                                  "Select the Location to copy the selected documents to"}));
    EXPECT_TRUE(hitList.audits.isEmpty());
    EXPECT_TRUE(hitList.locatedItemIds.isEmpty());
    EXPECT_FALSE(ui().busy());
}

TEST_F(VolumeOperationsTest, VolumeUpdateStoresTheLabelCutToElevenOnEachFirstFileRow) {
    const QString target = makeFolder(QStringLiteral("disk"));
    VolumeLabelOverride label([](const QString&) { return QStringLiteral("ARCHIVE2026XY"); });
    hitList.selection = {1, 10, 2}; // item 10 has two file rows
    ui().answerFolder(target);

    EXPECT_TRUE(updateVolume(hitList));
    for (qint32 itemId : {1, 2, 10})
        EXPECT_EQ(fileValue(itemId, QStringLiteral("volume")).toString(),
                  QStringLiteral("ARCHIVE2026"));
    EXPECT_EQ(fileValue(10, QStringLiteral("volume"), 1).toString(), QStringLiteral("VOL001"));
    EXPECT_TRUE(hitList.locatedItemIds.isEmpty());
    EXPECT_TRUE(QDir(target).isEmpty());
    EXPECT_EQ(Progressbar::current()->maximum(), 3);
    EXPECT_FALSE(progressShown());
}

TEST_F(VolumeOperationsTest, MoveAsksFirstThenMovesFilesAndRecordsTheNewVolume) {
    const QString target = makeFolder(QStringLiteral("moved"));
    const QString destination = QDir::toNativeSeparators(target) + QDir::separator();
    VolumeLabelOverride label([](const QString&) { return QStringLiteral("NEWDISK"); });
    hitList.selection = {1, 2};
    const QByteArray first = contentsOf(documentPath(mainFileName(1)));

    ui().answerFolder(target).answerMessage(MessageAnswer::No);
    EXPECT_FALSE(moveFilesAndUpdateVolume(hitList));
    EXPECT_EQ(ui().lastPrompt()->text,
              QStringLiteral("You are about to move the selected documents from their existing "
                             "location to ") +
                  destination +
                  QStringLiteral(" with volume:NEWDISK. You must make sure that the new location "
                                 "is added to the list of document paths. Refer to the "
                                 "Administration tool in order to do this. Are you sure you want "
                                 "to proceed at this time?"));
    EXPECT_EQ(ui().lastPrompt()->title, QStringLiteral("Warning"));
    EXPECT_EQ(ui().lastPrompt()->style, MessageStyle::YesNo | MessageStyle::Information);
    EXPECT_TRUE(QDir(target).isEmpty());

    hitList.events.clear();
    ui().answerFolder(target).answerMessage(MessageAnswer::Yes);
    EXPECT_TRUE(moveFilesAndUpdateVolume(hitList));
    for (qint32 itemId : {1, 2}) {
        EXPECT_FALSE(QFile::exists(documentPath(mainFileName(itemId))));
        EXPECT_EQ(fileValue(itemId, QStringLiteral("volume")).toString(),
                  QStringLiteral("NEWDISK"));
    }
    EXPECT_EQ(contentsOf(target + QLatin1Char('/') + mainFileName(1)), first);
    EXPECT_EQ(hitList.events,
              QStringList({QStringLiteral("GetServerName"), QStringLiteral("LocateDocumentToMove"),
                           QStringLiteral("LocateDocumentToMove"), QStringLiteral("CurrentItemID"),
                           QStringLiteral("RecordAuditTrail")}));
    ASSERT_EQ(hitList.audits.size(), 1);
    EXPECT_EQ(hitList.audits[0].action, QStringLiteral("Moving"));
    EXPECT_EQ(hitList.audits[0].itemIds, QList<qint32>({1, 2}));
    EXPECT_EQ(hitList.audits[0].description, QStringLiteral("Move items to: ") + destination);
    EXPECT_FALSE(ui().busy());
}

TEST_F(VolumeOperationsTest, OfConsecutiveDocumentsSharingAStoredNameOnlyTheFirstIsHandled) {
    execute(QStringLiteral("UPDATE ktfile SET fname = 'inv0000001.txt' WHERE itemid = 2"));
    execute(QStringLiteral("UPDATE ktfile SET fname = NULL WHERE itemid = 4"));
    const QString copies = makeFolder(QStringLiteral("copies"));
    const QString moved = makeFolder(QStringLiteral("moved"));

    // 2 repeats 1 and is skipped; 1 after 3 is no repeat; 4 names no file.
    hitList.selection = {1, 2, 3, 1, 4};
    ui().answerFolder(copies);
    EXPECT_TRUE(copyDocuments(hitList));
    EXPECT_EQ(hitList.locatedItemIds, QList<qint32>({1, 3, 1}));
    EXPECT_EQ(QDir(copies).entryList(QDir::Files), QStringList({mainFileName(1), mainFileName(3)}));

    hitList.locatedItemIds.clear();
    hitList.selection = {1, 2};
    ui().answerFolder(moved).answerMessage(MessageAnswer::Yes);
    EXPECT_TRUE(moveFilesAndUpdateVolume(hitList));
    EXPECT_EQ(hitList.locatedItemIds, QList<qint32>({1}));
    EXPECT_EQ(fileValue(2, QStringLiteral("volume")).toString(), QStringLiteral("VOL001"));
    EXPECT_TRUE(QFile::exists(documentPath(mainFileName(2))));
}

TEST_F(VolumeOperationsTest, MoveIntoAReadOnlyFolderLeavesFilesAndRowsAsTheyWere) {
    const QString target = makeFolder(QStringLiteral("locked"));
    QFile::setPermissions(target, QFile::ReadOwner | QFile::ExeOwner);
    hitList.selection = {1, 2, 10};
    QList<QByteArray> before;
    for (qint32 itemId : hitList.selection)
        before << contentsOf(documentPath(mainFileName(itemId)));
    ui().answerFolder(target).answerMessage(MessageAnswer::Yes);
    {
        WithoutFileOverride user; // as users are, also when the tests run as root
        ASSERT_TRUE(user.ok());
        EXPECT_TRUE(moveFilesAndUpdateVolume(hitList));
    }
    for (qsizetype i = 0; i < hitList.selection.size(); ++i) {
        const qint32 itemId = hitList.selection[i];
        EXPECT_EQ(contentsOf(documentPath(mainFileName(itemId))), before[i]);
        EXPECT_EQ(fileValue(itemId, QStringLiteral("volume")).toString(), QStringLiteral("VOL001"));
    }
    EXPECT_TRUE(
        QDir(target).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
    QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(VolumeOperationsTest, CopyReplacesOlderCopiesAndStopsWithTheReasonOnFailure) {
    const QString target = makeFolder(QStringLiteral("out"));
    environment.writeFile(QStringLiteral("out/") + mainFileName(1), "an older copy");
    hitList.selection = {1, 3};
    hitList.locate = [this](qint32 itemId, const QString& file, const QString&) {
        return itemId == 3 ? QString() : documentPath(file);
    };
    ui().answerFolder(target + QLatin1Char('/')); // keeps its one separator

    EXPECT_TRUE(copyDocuments(hitList));
    EXPECT_EQ(contentsOf(target + QLatin1Char('/') + mainFileName(1)),
              contentsOf(documentPath(mainFileName(1))));
    EXPECT_EQ(QDir(target).entryList(QDir::Files), QStringList{mainFileName(1)});
    ASSERT_EQ(hitList.audits.size(), 1);
    EXPECT_EQ(hitList.audits[0].action, QStringLiteral("Copying"));
    EXPECT_EQ(hitList.audits[0].description, QStringLiteral("Copy items to: ") +
                                                 QDir::toNativeSeparators(target) +
                                                 QDir::separator());

    hitList.locate = [](qint32, const QString&, const QString&) {
        return QStringLiteral("/no/such/file.txt");
    };
    ui().answerFolder(target).answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(copyDocuments(hitList));
    EXPECT_TRUE(
        ui().lastPrompt()->text.startsWith(QStringLiteral("Cannot copy /no/such/file.txt")));
    EXPECT_EQ(hitList.audits.size(), 1);
    EXPECT_FALSE(progressShown());
    EXPECT_FALSE(ui().busy());

    // A file moved onto itself stays where it is.
    const QString source = documentPath(mainFileName(5));
    EXPECT_TRUE(moveDocumentFile(source, sample.documentFolder() + QStringLiteral("/./") +
                                             mainFileName(5)));
    EXPECT_TRUE(QFile::exists(source));
}

} // namespace
} // namespace vx::test

namespace vx::test {
namespace {

// Stored names that would lead out of the chosen folder, on items 1 to 5; item 6 is ordinary.
// The host finds a real file for every item, so a name let through would really be written.
class StoredNamesTest : public FileOpsFixture {
protected:
    QString chosen;  // the folder the user picks
    QString outside; // what an absolute stored name points into
    QStringList names;

    void SetUp() override {
        chosen = makeFolder(QStringLiteral("level1/level2/chosen"));
        outside = makeFolder(QStringLiteral("outside"));
        makeFolder(QStringLiteral("level1/level2/chosen/a"));
        names = {QStringLiteral("../x"), outside + QStringLiteral("/x"), QStringLiteral("a/b"),
                 QStringLiteral(".."), QStringLiteral("/abs/x")};
        for (qsizetype i = 0; i < names.size(); ++i)
            execute(QStringLiteral("UPDATE ktfile SET fname = '%1' WHERE itemid = %2")
                        .arg(names[i])
                        .arg(i + 1));
        hitList.selection = {1, 2, 3, 4, 5, 6};
        hitList.locate = [this](qint32 itemId, const QString&, const QString&) {
            return documentPath(mainFileName(itemId));
        };
    }

    // Nothing but item 6's file in the chosen folder (and its empty subfolder), nothing beside
    // or above it.
    void expectNothingWrittenOutside() {
        EXPECT_EQ(QDir(chosen).entryList(QDir::Files), QStringList{mainFileName(6)});
        EXPECT_TRUE(QDir(chosen + QStringLiteral("/a")).isEmpty());
        EXPECT_TRUE(QDir(outside).isEmpty());
        EXPECT_EQ(QDir(environment.filePath(QStringLiteral("level1/level2")))
                      .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList{QStringLiteral("chosen")});
        EXPECT_FALSE(QFileInfo::exists(QStringLiteral("/abs/x")));
        EXPECT_EQ(hitList.locatedItemIds, QList<qint32>{6}) << "skipped before the host is asked";
    }

    void expectSkippedReported(const QString& title) {
        ASSERT_TRUE(ui().lastPrompt());
        const Prompt prompt = *ui().lastPrompt();
        EXPECT_EQ(prompt.title, title);
        EXPECT_EQ(prompt.style, MessageStyle::OkOnly | MessageStyle::Exclamation);
        for (qsizetype i = 0; i < names.size(); ++i)
            EXPECT_TRUE(
                prompt.text.contains(QStringLiteral("Item %1: \"%2\"").arg(i + 1).arg(names[i])))
                << prompt.text.toStdString();
        EXPECT_FALSE(prompt.text.contains(QStringLiteral("Item 6")));
    }
};

TEST_F(StoredNamesTest, CopySkipsNamesThatAreNotPlainAndCopiesTheRest) {
    ui().answerFolder(chosen).answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(copyDocuments(hitList));
    expectNothingWrittenOutside();
    expectSkippedReported(QStringLiteral("Copy Documents"));
    EXPECT_EQ(hitList.audits.size(), 1);
}

TEST_F(StoredNamesTest, MoveSkipsNamesThatAreNotPlainAndKeepsTheirFilesAndVolumes) {
    VolumeLabelOverride label([](const QString&) { return QStringLiteral("NEWDISK"); });
    ui().answerFolder(chosen).answerMessage(MessageAnswer::Yes).answerMessage(MessageAnswer::Ok);
    EXPECT_TRUE(moveFilesAndUpdateVolume(hitList));
    expectNothingWrittenOutside();
    expectSkippedReported(QStringLiteral("Move Documents"));
    for (qint32 itemId = 1; itemId <= 5; ++itemId) {
        EXPECT_TRUE(QFile::exists(documentPath(mainFileName(itemId))));
        EXPECT_NE(fileValue(itemId, QStringLiteral("volume")).toString(),
                  QStringLiteral("NEWDISK"));
    }
    EXPECT_EQ(fileValue(6, QStringLiteral("volume")).toString(), QStringLiteral("NEWDISK"));
}

TEST(StoredFileName, OnlyPlainNamesLeadIntoTheFolder) {
    const QString folder = QStringLiteral("/data/chosen");
    for (const QString& name : {QStringLiteral("inv0000001.txt"), QStringLiteral("a..b"),
                                QStringLiteral("...x"), QStringLiteral(" spaced name.pdf")})
        EXPECT_EQ(pathInsideFolder(folder, name), folder + u'/' + name) << name.toStdString();
    for (const QString& name :
         {QString(), QStringLiteral("."), QStringLiteral(".."), QStringLiteral("../x"),
          QStringLiteral("/abs/x"), QStringLiteral("a/b"), QStringLiteral("a\\b"),
          QStringLiteral("..\\x"), QStringLiteral("C:x"), QStringLiteral("c:\\x"),
          QStringLiteral("x\ny")}) {
        EXPECT_FALSE(pathInsideFolder(folder, name)) << name.toStdString();
        EXPECT_FALSE(storedNameProblem(name).isEmpty()) << name.toStdString();
    }
}

} // namespace
} // namespace vx::test
