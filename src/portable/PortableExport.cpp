#include "portable/PortableExport.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "operations/HitListContext.h"
#include "operations/Progressbar.h"
#include "operations/StoredFileName.h"
#include "portable/DocumentCopyQueue.h"
#include "portable/FileCopier.h"
#include "portable/MediaDialog.h"
#include "portable/PortableDatabase.h"
#include "portable/PortableRows.h"
#include "portable/QueryFormRewriter.h"
#include "portable/ReadMeWriter.h"
#include "portable/SelectionRows.h"
#include "portable/VeltraneFolders.h"
#include "portable/VolumeAccounting.h"
#include "session/Conversions.h"
#include "session/LibraryState.h"
#include "session/Settings.h"
#include "session/ShownText.h"
#include "session/UiServices.h"
#include "session/companions/NativeHelpers.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QProcess>
#include <algorithm>
#include <memory>
#include <optional>

namespace vx {

namespace {

const QString viewerFolderName = QStringLiteral("veltrane");
const QStringList viewerFiles{QStringLiteral("veltrane.exe"), QStringLiteral("veltrane.udl"),
                              QStringLiteral("veltrane.chm")};
const QString databaseName = QStringLiteral("veltrane.znl");
const QString queryFormName = QStringLiteral("veltrane.xqr");
const QString documentFolderName = QStringLiteral("Document");
const QString noVolumeName = QStringLiteral("VeltNoVol");
constexpr qint32 fileNotFound = 53;
// How long the copied query form may take to appear, in event-loop turns.
constexpr int visibilityTurns = 10000;

QString withSeparator(const QString& folder) {
    if (folder.endsWith(u'/') || folder.endsWith(u'\\'))
        return folder;
    return folder + u'/';
}

// The configuration root: the first known document path cut after its last separator.
QString configurationRoot(const Connection& repository) {
    Recordset paths;
    paths.open(QStringLiteral("select * from KTPath"), repository);
    if (paths.eof())
        return QString();
    const QString path = paths.value(QStringLiteral("Path")).toString();
    const qsizetype cut = std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
    return path.left(cut + 1);
}

// A document larger than the medium ends the export.
struct MediaOverflow {
    qint32 itemId;
};

class PortableExportRun {
public:
    explicit PortableExportRun(HitListContext& hitList)
        : m_hitList(hitList) {}

    void run();

private:
    bool askForMedium();
    bool chooseLocations();
    void createExportFolders();
    void createVolumeFolders(const QString& volumeName);
    bool copyQueryForm();
    void exportDocuments(PortableRows& rows, ProgressScope& progress);
    void copyDatabaseToFurtherVolumes();
    void launchAuthoring();
    void createFolder(const QString& path);
    void failAndClean(const QString& message, const QString& title);
    void copyOverwriting(const QString& from, const QString& to) {
        m_copier.copyOverwriting(from, to);
    }

    QString volumeFolder() const { return m_root + u'/' + m_volumes->volumeName(); }

    HitListContext& m_hitList;
    QList<qint32> m_selection;
    QString m_base;
    QString m_groupTable;
    QString m_configRoot;
    QString m_sourceFolder;
    QString m_destination;
    QString m_root;
    std::optional<VolumeAccounting> m_volumes;
    QStringList m_createdFolders;
    QStringList m_hintTables;
    SkippedDocuments m_skipped;
    FileCopier m_copier;
};

void PortableExportRun::run() {
    m_selection = m_hitList.selectionForCommand();
    if (!askForMedium())
        return;

    // The base names every CD volume's folder.
    const QString problem = storedNameProblem(m_base);
    if (library().exportKind == QLatin1String("ExportToCD") && !problem.isEmpty()) {
        ui().messageBox(QStringLiteral("The volume name \"%1\" cannot name a folder: %2. Please "
                                       "choose another volume name.")
                            .arg(shownText(m_base), problem),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("ExportToVeltrane"));
        return;
    }

    std::optional<BusyCursor> busy;
    std::unique_ptr<PortableRows> rows;
    std::optional<ProgressScope> progress;
    // Puts the user back where the export started and takes away what it made.
    auto closeEverything = [&] {
        progress.reset();
        busy.reset();
        rows.reset();
    };
    try {
        m_groupTable = m_hitList.groupTableName();
        // It names the query form's file, read into the export.
        if (const QString tableProblem = storedNameProblem(m_groupTable); !tableProblem.isEmpty())
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("The group table name \"%1\" cannot name a file: %2.")
                            .arg(shownText(m_groupTable), tableProblem));
        m_configRoot = configurationRoot(m_hitList.connection());
        busy.emplace();
        if (!chooseLocations())
            return;

        const bool toCD = library().exportKind == QLatin1String("ExportToCD");
        QString folderVolume;
        if (!toCD) {
            QString label;
            try {
                KTVolumeLabel(label, m_destination);
            } catch (...) { // an unreadable label just means an unnamed volume
            }
            folderVolume = label.left(VolumeLabelSize);
            if (folderVolume.isEmpty() || !storedNameProblem(folderVolume).isEmpty())
                folderVolume = noVolumeName;
        }
        m_volumes.emplace(toCD, library().mediaSizeMB, m_base, folderVolume);

        createExportFolders();
        if (!copyQueryForm()) {
            busy.reset();
            ui().messageBox(
                QStringLiteral("Could not locate: ") + m_groupTable + QStringLiteral(".xqr"),
                MessageStyle::OkOnly | MessageStyle::Critical, QStringLiteral("ExportToVeltrane"));
            return;
        }

        progress.emplace(m_hitList.controlWidget(), m_selection.size());
        const QString database = volumeFolder() + u'/' + databaseName;
        createPortableDatabaseFile(database);
        if (!CreatePortableTables(database, m_groupTable, m_hitList.connection(), m_hintTables)) {
            closeEverything();
            ui().messageBox(
                QStringLiteral("Export To Veltrane - Failed to create tables in veltrane.znl"),
                MessageStyle::OkOnly | MessageStyle::Critical,
                QStringLiteral("Export To Veltrane"));
            return;
        }

        rows = std::make_unique<PortableRows>(database, m_hitList.connection(), m_groupTable);
        rows->addGroup();
        exportDocuments(*rows, *progress);
        rows->copyWordLists();
        rows->copyHintTables(m_hintTables);
        rows->close();
        rows.reset();
        copyDatabaseToFurtherVolumes();
        closeEverything();
        launchAuthoring();
    } catch (const MediaOverflow& overflow) {
        closeEverything();
        failAndClean(QStringLiteral("Export Aborted - The following record: \r\n(itemid)-> ") +
                         QString::number(overflow.itemId) +
                         QStringLiteral("\r\nis larger than the current Media Size (") +
                         QString::number(library().mediaSizeMB) +
                         QStringLiteral(" MB)\r\n\r\nPlease change media size and Export again."),
                     QStringLiteral("Media Size Overflow"));
        return;
    } catch (const std::exception& failure) {
        closeEverything();
        const auto* error = dynamic_cast<const Error*>(&failure);
        const qint32 number = error ? error->number() : ErrorNumber::Unspecified;
        const QString description =
            error ? error->description() : QString::fromLocal8Bit(failure.what());
        failAndClean(QStringLiteral("Error: ") + QString::number(number) + QStringLiteral(" - ") +
                         description +
                         QStringLiteral("\r\n\r\nNOTE: Please check that you have the\r\n"
                                        "Veltrane folder present under: ") +
                         QDir::toNativeSeparators(QDir::currentPath()) +
                         QStringLiteral("\r\nand that it contains: veltrane.exe, veltrane.udl & "
                                        "veltrane.chm"),
                     QStringLiteral("Export to Veltrane"));
        return;
    }

    QDir::setCurrent(m_sourceFolder);
    m_skipped.report(QStringLiteral("ExportToVeltrane"));
    m_hitList.raiseCurrentItemID();
    m_hitList.raiseRecordAuditTrail(QStringLiteral("Exporting"), m_selection,
                                    QStringLiteral("ExportToVeltrane: ") +
                                        QDir::toNativeSeparators(volumeFolder()));
}

bool PortableExportRun::askForMedium() {
    LibraryState& state = library();
    state.customSize = false;
    QPointer<MediaDialog> dialog = new MediaDialog(m_hitList.controlWidget());
    dialog->show();
    state.exportCancelled = false;
    state.exportDialogDone = false;
    // The dialog is modeless: the user works it while the export waits here.
    while (!state.exportDialogDone && dialog && dialog->isVisible())
        ui().processEvents();
    if (!state.exportDialogDone)
        state.exportCancelled = true; // the dialog went away without an answer
    state.exportDialogDone = false;
    delete dialog.data();
    m_base = getSetting(QStringLiteral("Settings"), QStringLiteral("strCDLabel"),
                        QStringLiteral("Veltran"));
    return !state.exportCancelled;
}

bool PortableExportRun::chooseLocations() {
    QString buffer;
    const qint16 length = KTBrowsePath(m_hitList.controlWidget(), buffer,
                                       QStringLiteral("Select the Location where Veltrane will be "
                                                      "created"));
    if (length == 0)
        return false;
    m_sourceFolder = withSeparator(QDir::currentPath());
    m_destination = withSeparator(buffer.left(length));
    return true;
}

void PortableExportRun::createFolder(const QString& path) {
    if (QFileInfo::exists(path) || !QDir().mkdir(path))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot create the folder ") + QDir::toNativeSeparators(path));
    // Only what this export made is ever removed again.
    m_createdFolders << path;
}

void PortableExportRun::createVolumeFolders(const QString& volumeName) {
    const QString volume = m_root + u'/' + volumeName;
    createFolder(volume);
    createFolder(volume + u'/' + documentFolderName);
    const QString viewerFolder = m_sourceFolder + viewerFolderName + u'/';
    for (const QString& file : viewerFiles)
        copyOverwriting(viewerFolder + file, volume + u'/' + file);
}

void PortableExportRun::createExportFolders() {
    const QDateTime now = QDateTime::currentDateTime();
    const QString kind = library().exportKind;
    m_root = m_destination + kind + u'_' + formatDateTime(now, QStringLiteral("ddmmyy")) +
             formatDateTime(now, QStringLiteral("hhmmss"));
    createFolder(m_root);
    WriteReadMe(m_root, kind, m_volumes->volumeName());
    createVolumeFolders(m_volumes->volumeName());
}

bool PortableExportRun::copyQueryForm() {
    const QString source =
        m_configRoot + QStringLiteral("config/") + m_groupTable + QStringLiteral(".xqr");
    if (!QFileInfo::exists(source))
        return false;
    const QString copy = volumeFolder() + u'/' + queryFormName;
    copyOverwriting(source, copy);
    for (int turn = 0; !QFileInfo::exists(copy); ++turn) {
        if (turn == visibilityTurns)
            throw Error(fileNotFound,
                        QStringLiteral("File not found: ") + QDir::toNativeSeparators(copy));
        ui().processEvents();
    }
    m_hintTables = rewriteQueryForm(copy);
    return true;
}

void PortableExportRun::exportDocuments(PortableRows& rows, ProgressScope& progress) {
    SelectionRows selected(m_hitList.connection(), m_groupTable, m_selection);
    // The files are copied beside the rows being written; a failed copy fails the export.
    DocumentCopyQueue copies;
    QString lastFileName;
    FolderNames documentNames;
    bool placeholderWritten = false;
    for (qsizetype position = 1; position <= m_selection.size(); ++position) {
        progress.setValue(position);
        const qint32 itemId = m_selection.at(position - 1);

        // Only an item's first file travels; the same file twice in a row travels once.
        if (!selected.moveTo(position - 1))
            continue;
        const Recordset& files = selected.file();
        const QVariant fileName = files.value(QStringLiteral("fName"));
        if (fileName.isNull() || fileName.toString() == lastFileName)
            continue;
        lastFileName = fileName.toString();
        // A name that is not plain would put the file outside the volume's document folder:
        // the whole document stays out of the export.
        if (!storedNameProblem(lastFileName).isEmpty()) {
            m_skipped.add(itemId, lastFileName);
            continue;
        }
        // Nor may it replace another document's file on a medium that ignores case.
        if (!documentNames.claim(lastFileName)) {
            m_skipped.add(itemId, lastFileName,
                          QStringLiteral("another exported document has the same name but for "
                                         "case"));
            continue;
        }

        if (!placeholderWritten) {
            rows.addPlaceholderItem();
            placeholderWritten = true;
        }
        rows.addItem(selected.item(), selected.groupRow());

        const QString answer = m_hitList.locateDocumentFromID(
            itemId, lastFileName, files.value(QStringLiteral("volume")).toString());
        const qint64 size = files.value(QStringLiteral("fsize")).toLongLong();
        // A file planted as a link out of the document folder is not carried away.
        const QString fileProblem =
            answer == QLatin1String("ERROR") ? QString() : documentFileProblem(answer);
        if (!fileProblem.isEmpty())
            m_skipped.add(itemId, lastFileName, QStringLiteral("its file ") + fileProblem);
        const bool found = answer != QLatin1String("ERROR") && fileProblem.isEmpty();
        switch (m_volumes->placementOf(size, found)) {
        case VolumeAccounting::Placement::TooLarge:
            throw MediaOverflow{itemId};
        case VolumeAccounting::Placement::Skip:
            break;
        case VolumeAccounting::Placement::Place: {
            if (m_volumes->addFile(size))
                createVolumeFolders(m_volumes->volumeName());
            const QString volume = m_volumes->volumeName();
            const auto target =
                pathInsideFolder(volumeFolder() + u'/' + documentFolderName, lastFileName);
            if (!target) // checked above; kept as the last word before anything is written
                throw Error(ErrorNumber::Unspecified,
                            QStringLiteral("The stored file name \"%1\" leads outside the export.")
                                .arg(shownText(lastFileName)));
            rows.addFile(files, volume == noVolumeName ? QString() : volume);
            copies.add(answer, *target);
            break;
        }
        }
    }
    copies.finish();
}

void PortableExportRun::copyDatabaseToFurtherVolumes() {
    if (library().exportKind != QLatin1String("ExportToCD"))
        return;
    const QString first = m_root + u'/' + VolumeAccounting::cdVolumeName(m_base, 0) + u'/';
    for (qint16 j = 1; j <= m_volumes->volumeCounter(); ++j) {
        const QString volume = m_root + u'/' + VolumeAccounting::cdVolumeName(m_base, j) + u'/';
        copyOverwriting(first + databaseName, volume + databaseName);
        copyOverwriting(first + queryFormName, volume + queryFormName);
    }
}

void PortableExportRun::launchAuthoring() {
    if (!library().launchAuthoring)
        return;
    const QString program = m_sourceFolder + viewerFolderName + QStringLiteral("/SendToCD.exe");
    if (!QFileInfo(m_root + u'/' + VolumeAccounting::cdVolumeName(m_base, 0)).isDir()) {
        ui().messageBox(QStringLiteral("Can NOT locate export folder.") + QLatin1Char('\r') +
                            QStringLiteral("Please launch CD Authoring Tool manually."),
                        MessageStyle::OkOnly | MessageStyle::Information, applicationTitle());
        return;
    }
    if (!QProcess::startDetached(program, {QDir::toNativeSeparators(volumeFolder())}))
        ui().messageBox(QStringLiteral("Could not launch CD Authoring Tool."),
                        MessageStyle::OkOnly | MessageStyle::Information,
                        QStringLiteral("Failed to launch CD Authoring"));
}

void PortableExportRun::failAndClean(const QString& message, const QString& title) {
    ui().messageBox(message, MessageStyle::OkOnly | MessageStyle::Exclamation, title);
    if (!m_sourceFolder.isEmpty())
        QDir::setCurrent(m_sourceFolder);
    RemoveVeltraneFolders(m_createdFolders, qint16(m_createdFolders.size()));
}

} // namespace

void exportToVeltrane(HitListContext& hitList) {
    PortableExportRun(hitList).run();
}

} // namespace vx
