#include "portable/PortableExport.h"

#include "PortableFixture.h"
#include "WithoutFileOverride.h"
#include "operations/Progressbar.h"
#include "session/companions/NativeHelpers.h"

#include <QCryptographicHash>
#include <QFile>

using namespace vx;
using namespace vx::test;

namespace {

constexpr qint64 MB = 1048576;

QByteArray digestOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1);
}

QStringList filesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files, QDir::Name);
}

class PortableExportTest : public PortableFixture {
protected:
    // Exports into the destination; `messages` message boxes are answered OK on the way.
    void exportNow(int messages = 0) {
        environment.ui().answerFolder(destination);
        for (int i = 0; i < messages; ++i)
            environment.ui().answerMessage(MessageAnswer::Ok);
        exportToVeltrane(*hitList);
    }
    // The name a folder export gives its volume on the destination's drive.
    QString driveVolume() const {
        QString label;
        KTVolumeLabel(label, destination);
        return label.isEmpty() ? QStringLiteral("VeltNoVol") : label;
    }
};

TEST_F(PortableExportTest, FolderExportPackagesTheSelectedDocuments) {
    hitList->selection = {1, 2, 4};
    chooseMedium(MediaDialog::FullExport);
    exportNow();

    const QString root = exportRoot();
    ASSERT_FALSE(root.isEmpty());
    EXPECT_TRUE(QFileInfo(root).fileName().startsWith("ExportToFolder_"));
    EXPECT_EQ(QFileInfo(root).fileName().size(), QString("ExportToFolder_").size() + 12);
    const QString volume = root + "/" + driveVolume();
    EXPECT_EQ(filesIn(root), QStringList{"ReadMe.txt"});
    EXPECT_EQ(filesIn(volume), QStringList({"veltrane.chm", "veltrane.exe", "veltrane.udl",
                                            "veltrane.xqr", "veltrane.znl"}));
    EXPECT_EQ(filesIn(volume + "/Document"),
              QStringList({"inv0000001.txt", "inv0000002.txt", "inv0000004.txt"}));
    EXPECT_EQ(digestOf(volume + "/Document/inv0000002.txt"),
              digestOf(sample.documentFolder() + "/inv0000002.txt"));
    EXPECT_EQ(digestOf(volume + "/veltrane.udl"),
              digestOf(sample.dir() + "/veltrane/veltrane.udl"));

    // The viewer's data link opens the database beside it.
    Connection viewer;
    viewer.open("File Name=" + volume + "/veltrane.udl");
    QStringList items{"0|void|true|true"};
    items << rowsOf(hitList->connection(), "SELECT itemid, username, attachment, deleted FROM "
                                           "KTItem WHERE itemid IN (1, 2, 4) ORDER BY itemid");
    EXPECT_EQ(rowsOf(viewer, "SELECT itemid, username, attachment, deleted FROM KTItem ORDER BY "
                             "itemid"),
              items);
    // The folder volume's files carry no volume name when the drive has none.
    const QString fileVolume = driveVolume() == "VeltNoVol" ? QString() : driveVolume();
    EXPECT_EQ(rowsOf(viewer, "SELECT fileid, fname, volume FROM KTFile ORDER BY fileid"),
              QStringList({"1|inv0000001.txt|" + fileVolume, "2|inv0000002.txt|" + fileVolume,
                           "4|inv0000004.txt|" + fileVolume}));
    EXPECT_EQ(rowsOf(viewer, "SELECT * FROM Invoices ORDER BY itemid"),
              rowsOf(hitList->connection(), "SELECT * FROM Invoices WHERE itemid IN (1, 2, 4) "
                                            "ORDER BY itemid"));
    EXPECT_EQ(rowsOf(viewer, "SELECT Groupid, Name, Description FROM KTGroup"),
              QStringList{"1|Invoices|Sample invoices"});
    EXPECT_EQ(rowsOf(viewer, "SELECT count(*) FROM keywords"),
              rowsOf(hitList->connection(), "SELECT count(*) FROM keywords"));
    // The list field's pick list, filled from the repository (cut to the portable width).
    QStringList hints;
    for (const QString& hint :
         rowsOf(hitList->connection(), "SELECT Categories FROM InvoicesCategoriesHints"))
        hints << hint.left(20);
    EXPECT_FALSE(hints.isEmpty());
    EXPECT_EQ(rowsOf(viewer, "SELECT Categories FROM InvoicesCategoriesHints"), hints);
    viewer.close();

    EXPECT_EQ(hitList->events,
              QStringList({"LocateDocumentFromID", "LocateDocumentFromID", "LocateDocumentFromID",
                           "CurrentItemID", "RecordAuditTrail"}));
    ASSERT_EQ(hitList->audits.size(), 1);
    EXPECT_EQ(hitList->audits[0].action, "Exporting");
    EXPECT_EQ(hitList->audits[0].itemIds, QList<qint32>({1, 2, 4}));
    EXPECT_EQ(hitList->audits[0].description,
              "ExportToVeltrane: " + QDir::toNativeSeparators(volume));
    EXPECT_TRUE(environment.ui().messageTexts().isEmpty());
    EXPECT_EQ(QDir::currentPath(), QDir(sample.dir()).absolutePath());
    EXPECT_FALSE(environment.ui().busy());
}

TEST_F(PortableExportTest, CdExportOpensTheNextVolumeAtTheCrossingFile) {
    hitList->selection = {1, 2, 3, 4, 5, 6};
    for (qint32 id = 1; id <= 6; ++id)
        setFileSize(id, 4 * MB);
    chooseMedium(MediaDialog::CustomCd, "10", "Arc");
    exportNow();

    const QString root = exportRoot();
    ASSERT_FALSE(root.isEmpty());
    EXPECT_TRUE(QFileInfo(root).fileName().startsWith("ExportToCD_"));
    // 4 + 4 fit; the third file crosses 10 MB and opens Arc0001, whose total starts at zero.
    EXPECT_EQ(QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
              QStringList({"Arc0000", "Arc0001", "Arc0002"}));
    EXPECT_EQ(filesIn(root + "/Arc0000/Document"),
              QStringList({"inv0000001.txt", "inv0000002.txt"}));
    EXPECT_EQ(filesIn(root + "/Arc0001/Document"),
              QStringList({"inv0000003.txt", "inv0000004.txt", "inv0000005.txt"}));
    EXPECT_EQ(filesIn(root + "/Arc0002/Document"), QStringList{"inv0000006.txt"});
    for (const char* volume : {"Arc0001", "Arc0002"}) {
        EXPECT_EQ(filesIn(root + "/" + volume), filesIn(root + "/Arc0000")) << volume;
        for (const char* file : {"/veltrane.znl", "/veltrane.xqr"})
            EXPECT_EQ(digestOf(root + "/" + volume + file), digestOf(root + "/Arc0000" + file))
                << volume << file;
    }
    Connection portable = openPortable(root + "/Arc0002");
    EXPECT_EQ(rowsOf(portable, "SELECT itemid, volume FROM KTFile ORDER BY itemid"),
              QStringList(
                  {"1|Arc0000", "2|Arc0000", "3|Arc0001", "4|Arc0001", "5|Arc0001", "6|Arc0002"}));
    EXPECT_EQ(rowsOf(portable, "SELECT count(*) FROM KTItem WHERE itemid = 0"), QStringList{"1"});
    portable.close();

    QFile readMe(root + "/ReadMe.txt");
    ASSERT_TRUE(readMe.open(QIODevice::ReadOnly));
    const QByteArray text = readMe.readAll();
    EXPECT_TRUE(text.contains("Export To CD (Custom Size)\r\n"));
    EXPECT_TRUE(text.contains("with volume name Arc0000, etc...)\r\n"));
    EXPECT_EQ(hitList->audits.value(0).description,
              "ExportToVeltrane: " + QDir::toNativeSeparators(root + "/Arc0002"));
}

TEST_F(PortableExportTest, AFileLargerThanTheMediumAbortsAndRemovesWhatWasMade) {
    const QString theirs = destination + "/theirs.txt";
    QFile keep(theirs);
    ASSERT_TRUE(keep.open(QIODevice::WriteOnly));
    keep.close();
    hitList->selection = {1, 2, 3, 4};
    for (qint32 id = 1; id <= 4; ++id)
        setFileSize(id, 6 * MB);
    setFileSize(4, 11 * MB);
    chooseMedium(MediaDialog::CustomCd, "10");
    exportNow(1);

    ASSERT_EQ(environment.ui().messageTexts().size(), 1);
    const Prompt prompt = *environment.ui().lastPrompt();
    EXPECT_EQ(prompt.text, "Export Aborted - The following record: \r\n(itemid)-> 4\r\nis larger "
                           "than the current Media Size (10 MB)\r\n\r\nPlease change media size "
                           "and Export again.");
    EXPECT_EQ(prompt.title, "Media Size Overflow");
    EXPECT_EQ(prompt.icon, MessageStyle::Exclamation);
    // Two volumes had been made; all of them are gone, the destination's own file stays.
    EXPECT_EQ(QDir(destination).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{"theirs.txt"});
    EXPECT_TRUE(hitList->audits.isEmpty());
    EXPECT_FALSE(environment.ui().busy());
    EXPECT_EQ(QDir::currentPath(), QDir(sample.dir()).absolutePath());
}

TEST_F(PortableExportTest, AnUnfoundFileExportsTheRowsOnly) {
    hitList->selection = {1, 2, 3};
    hitList->locate = [this](qint32 itemId, const QString& file, const QString&) {
        return itemId == 2 ? QStringLiteral("ERROR") : sample.documentFolder() + "/" + file;
    };
    chooseMedium(MediaDialog::Cd650);
    exportNow();

    const QString volume = exportRoot() + "/Veltran0000";
    EXPECT_EQ(filesIn(volume + "/Document"), QStringList({"inv0000001.txt", "inv0000003.txt"}));
    Connection portable = openPortable(volume);
    EXPECT_EQ(rowsOf(portable, "SELECT itemid FROM KTItem ORDER BY itemid"),
              QStringList({"0", "1", "2", "3"}));
    EXPECT_EQ(rowsOf(portable, "SELECT itemid FROM Invoices ORDER BY itemid"),
              QStringList({"1", "2", "3"}));
    EXPECT_EQ(rowsOf(portable, "SELECT itemid FROM KTFile ORDER BY itemid"),
              QStringList({"1", "3"}));
    EXPECT_EQ(hitList->locatedItemIds, QList<qint32>({1, 2, 3}));
    EXPECT_TRUE(environment.ui().messageTexts().isEmpty());
}

TEST_F(PortableExportTest, LongSelectionsSkipIncompleteDocumentsAndRepeatedFiles) {
    Connection repository = hitList->connection();
    repository.execute("DELETE FROM KTItem WHERE itemid = 5");
    repository.execute("DELETE FROM KTFile WHERE itemid = 6");
    // Item 11 names item 10's file first, so it follows it as the same file twice in a row.
    repository.execute("UPDATE KTFile SET fname = 'inv0000010.txt' WHERE itemid = 11");
    // More documents than one read takes, then ids nobody has.
    QList<qint32> selection;
    for (qint32 id = 1; id <= 300; ++id)
        selection << id;
    for (qint32 id = 5001; id <= 5300; ++id)
        selection << id;
    hitList->selection = selection;
    chooseMedium(MediaDialog::FullExport);
    exportNow();

    const QString volume = exportRoot() + "/" + driveVolume();
    const QStringList documents = filesIn(volume + "/Document");
    EXPECT_EQ(documents.size(), 297);
    EXPECT_FALSE(documents.contains("inv0000005.txt"));
    EXPECT_FALSE(documents.contains("inv0000006.txt"));
    EXPECT_FALSE(documents.contains("inv0000011.txt"));
    EXPECT_TRUE(documents.contains("inv0000300.txt"));
    Connection portable = openPortable(volume);
    EXPECT_EQ(rowsOf(portable, "SELECT count(*), min(itemid), max(itemid) FROM KTItem"),
              QStringList{"298|0|300"});
    EXPECT_EQ(rowsOf(portable, "SELECT count(*) FROM Invoices WHERE itemid IN (5, 6, 11)"),
              QStringList{"0"});
    // Each document's first file row, attachments staying behind.
    EXPECT_EQ(
        rowsOf(portable,
               "SELECT fileid, fname FROM KTFile WHERE itemid IN (10, 20) ORDER BY fileid"),
        rowsOf(repository,
               "SELECT fileid, fname FROM KTFile WHERE fname IN "
               "('inv0000010.txt', 'inv0000020.txt') AND itemid IN (10, 20) ORDER BY fileid"));
    EXPECT_EQ(rowsOf(portable, "SELECT count(*) FROM KTFile"), QStringList{"297"});
    portable.close();
    EXPECT_EQ(hitList->locatedItemIds.size(), 297);
    // The progress ends at the last document however seldom it was drawn on the way.
    ASSERT_NE(Progressbar::current(), nullptr);
    EXPECT_EQ(Progressbar::current()->value(), 600);
    EXPECT_TRUE(environment.ui().messageTexts().isEmpty());
}

TEST_F(PortableExportTest, CancelledBrowserEndsSilentlyAndNoSelectionTakesTheCurrentRecord) {
    chooseMedium(MediaDialog::Cd650);
    environment.ui().answerFolder(QString());
    exportToVeltrane(*hitList);
    ASSERT_EQ(environment.ui().prompts().size(), 1);
    EXPECT_EQ(environment.ui().prompts()[0].text,
              "Select the Location where Veltrane will be created");
    EXPECT_TRUE(QDir(destination).isEmpty());
    EXPECT_TRUE(hitList->events.isEmpty());
    EXPECT_FALSE(environment.ui().busy());

    // With nothing selected the current record is exported.
    ASSERT_TRUE(hitList->moveToItem(7));
    hitList->selection.clear();
    exportNow();
    EXPECT_EQ(filesIn(exportRoot() + "/Veltran0000/Document"), QStringList{"inv0000007.txt"});
    EXPECT_EQ(hitList->audits.value(0).itemIds, QList<qint32>{7});
}

TEST_F(PortableExportTest, MissingQueryFormOrViewerFilesAreReported) {
    QFile::remove(sample.queryFormPath());
    hitList->selection = {1};
    chooseMedium(MediaDialog::Cd650);
    exportNow(1);
    ASSERT_EQ(environment.ui().messageTexts(), QStringList{"Could not locate: Invoices.xqr"});
    EXPECT_EQ(environment.ui().lastPrompt()->title, "ExportToVeltrane");
    EXPECT_EQ(environment.ui().lastPrompt()->icon, MessageStyle::Critical);
    // The folders made so far stay.
    EXPECT_TRUE(QFileInfo(exportRoot() + "/Veltran0000/Document").isDir());
    EXPECT_TRUE(hitList->audits.isEmpty());

    QDir(destination).removeRecursively();
    QDir().mkpath(destination);
    QDir(sample.dir() + "/veltrane").removeRecursively();
    environment.ui().clearPrompts();
    exportNow(1);
    ASSERT_EQ(environment.ui().messageTexts().size(), 1);
    const Prompt prompt = *environment.ui().lastPrompt();
    EXPECT_TRUE(prompt.text.startsWith("Error: 53 - File not found: "))
        << prompt.text.toStdString();
    EXPECT_TRUE(prompt.text.endsWith(
        "\r\n\r\nNOTE: Please check that you have the\r\nVeltrane folder present under: " +
        QDir::toNativeSeparators(QDir(sample.dir()).absolutePath()) +
        "\r\nand that it contains: veltrane.exe, veltrane.udl & veltrane.chm"))
        << prompt.text.toStdString();
    EXPECT_EQ(prompt.title, "Export to Veltrane");
    EXPECT_EQ(prompt.icon, MessageStyle::Exclamation);
    EXPECT_TRUE(QDir(destination).isEmpty());
}

TEST_F(PortableExportTest, AFolderTurningUnwritableEndsWithNothingLeftBehind) {
    hitList->selection = {1, 2};
    // When the host is first asked for a file, the document folder becomes read-only.
    hitList->locate = [this](qint32, const QString& file, const QString&) {
        const QString documents = exportRoot() + "/Veltran0000/Document";
        QFile::setPermissions(documents, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        return sample.documentFolder() + "/" + file;
    };
    chooseMedium(MediaDialog::Cd650);
    {
        WithoutFileOverride user; // as users are, also when the tests run as root
        ASSERT_TRUE(user.ok());
        exportNow(1);
    }
    ASSERT_EQ(environment.ui().messageTexts().size(), 1);
    EXPECT_TRUE(environment.ui().lastPrompt()->text.startsWith("Error: "));
    EXPECT_TRUE(
        environment.ui().lastPrompt()->text.contains("NOTE: Please check that you have the"));
    EXPECT_EQ(environment.ui().lastPrompt()->title, "Export to Veltrane");
    EXPECT_TRUE(QDir(destination).isEmpty());
}

TEST_F(PortableExportTest, StoredNamesThatAreNotPlainKeepTheirDocumentsOutOfTheExport) {
    const QString outside = QDir(destinationFolder.path()).filePath("outside");
    QDir().mkpath(outside);
    const QStringList names{"../x", outside + "/x", "a/b", "..", "/abs/x"};
    Connection repository = hitList->connection();
    for (qsizetype i = 0; i < names.size(); ++i)
        repository.execute(
            QString("UPDATE KTFile SET fname = '%1' WHERE itemid = %2").arg(names[i]).arg(i + 1));
    hitList->selection = {1, 2, 3, 4, 5, 6};
    // A real file for every item: a name let through would really be written.
    hitList->locate = [this](qint32 itemId, const QString&, const QString&) {
        return sample.documentFolder() + QString("/inv%1.txt").arg(itemId, 7, 10, QChar('0'));
    };
    chooseMedium(MediaDialog::Cd650);
    exportNow(1);

    const QString volume = exportRoot() + "/Veltran0000";
    EXPECT_EQ(QDir(volume + "/Document").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{"inv0000006.txt"});
    EXPECT_EQ(QDir(volume).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList{"Document"});
    EXPECT_EQ(QDir(destination).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
    EXPECT_TRUE(QDir(outside).isEmpty());
    EXPECT_FALSE(QFileInfo::exists("/abs/x"));
    EXPECT_EQ(hitList->locatedItemIds, QList<qint32>{6});
    Connection portable = openPortable(volume);
    EXPECT_EQ(rowsOf(portable, "SELECT itemid FROM KTItem ORDER BY itemid"),
              QStringList({"0", "6"}));
    EXPECT_EQ(rowsOf(portable, "SELECT itemid FROM KTFile"), QStringList{"6"});

    ASSERT_EQ(environment.ui().messageTexts().size(), 1);
    const Prompt prompt = *environment.ui().lastPrompt();
    EXPECT_EQ(prompt.title, "ExportToVeltrane");
    for (qsizetype i = 0; i < names.size(); ++i)
        EXPECT_TRUE(prompt.text.contains(QString("Item %1: \"%2\"").arg(i + 1).arg(names[i])))
            << prompt.text.toStdString();
    EXPECT_EQ(hitList->audits.size(), 1);
}

} // namespace
