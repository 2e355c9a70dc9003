#include "DocumentResolver.h"

#include "ViewerSession.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "operations/StoredFileName.h"
#include "session/Conversions.h"
#include "session/ShownText.h"
#include "session/UiServices.h"

#include <QDir>
#include <QFileInfo>

namespace vx::viewer {

namespace {

QString documentIn(const QString& volumeFolder, const QString& storedName) {
    return QDir(QDir(volumeFolder).filePath(QStringLiteral("Document"))).filePath(storedName);
}

QString native(const QString& path) {
    return QDir::toNativeSeparators(path);
}

struct FileRow {
    bool present = false;
    QString name;
    QString volume;
};

FileRow fileRowOf(const ViewerSession& session, qint32 itemId) {
    FileRow row;
    if (itemId == 0)
        return row; // the export's placeholder item has no document
    Recordset files;
    files.open(QStringLiteral("select * from KTFile where itemid = ") +
                   numberToText(qint64(itemId)) + QStringLiteral(" order by fileid"),
               session.connection());
    if (files.eof() || files.value(QStringLiteral("fname")).isNull())
        return row;
    row.present = true;
    row.name = files.value(QStringLiteral("fname")).toString().trimmed();
    row.volume = files.value(QStringLiteral("volume")).toString().trimmed();
    return row;
}

} // namespace

DocumentResolver::DocumentResolver(ViewerSession& session, QWidget* owner)
    : m_session(session)
    , m_owner(owner) {}

bool DocumentResolver::isPlainFileName(const QString& name) {
    // Stored names are data: anything that could lead out of the Document folder is refused.
    return storedNameProblem(name).isEmpty();
}

bool DocumentResolver::hasFile(qint32 itemId) const {
    try {
        return fileRowOf(m_session, itemId).present;
    } catch (const Error&) {
        return false;
    }
}

DocumentResolver::Location DocumentResolver::locate(qint32 itemId) {
    FileRow row;
    try {
        row = fileRowOf(m_session, itemId);
    } catch (const Error& error) {
        return {{}, error.description()};
    }
    if (!row.present)
        return {{},
                itemId == 0 ? QStringLiteral("This row is not a document.")
                            : QStringLiteral("Document %1 has no file in this export: its file "
                                             "was not exported.")
                                  .arg(itemId)};
    return locate(row.name, row.volume);
}

DocumentResolver::Location DocumentResolver::locate(const QString& storedName,
                                                    const QString& volumeName) {
    const QString name = storedName.trimmed();
    const QString volume = volumeName.trimmed();
    if (!isPlainFileName(name))
        return {{},
                QStringLiteral("The stored file name \"%1\" is not a plain file name (%2); the "
                               "viewer opens files of the volume's Document folder only.")
                    .arg(shownText(name), storedNameProblem(name))};
    if (!volume.isEmpty() && !isPlainFileName(volume))
        return {{},
                QStringLiteral("The stored volume name \"%1\" is not a plain name (%2).")
                    .arg(shownText(volume), storedNameProblem(volume))};
    const QString folder = volumeFolder(volume, name);
    if (folder.isEmpty())
        return {{}, QStringLiteral("The volume %1 holding %2 was not found.").arg(volume, name)};
    const QString path = documentIn(folder, name);
    if (const QString problem = documentFileProblem(path); !problem.isEmpty())
        return {{}, QStringLiteral("The file %1 is not opened: %2.").arg(native(path), problem)};
    if (const QString problem = openingProblem(path); !problem.isEmpty())
        return {
            {},
            QStringLiteral("The file %1 is not opened: %2.").arg(native(shownText(path)), problem)};
    if (!QFileInfo(path).isFile())
        return {{},
                QStringLiteral("The file %1 is missing from the volume %2.")
                    .arg(native(path), volume.isEmpty() ? m_session.volume().name : volume)};
    return {QFileInfo(path).absoluteFilePath(), {}};
}

QString DocumentResolver::volumeFolder(const QString& volumeName, const QString& storedName) {
    const ExportVolume& open = m_session.volume();
    if (volumeName.isEmpty() || volumeName == open.name)
        return open.folder;
    const QString remembered = m_session.rememberedVolume(volumeName);
    if (!remembered.isEmpty() && QFileInfo(documentIn(remembered, storedName)).isFile())
        return remembered;
    if (const auto beside = open.neighbours.constFind(volumeName); beside != open.neighbours.cend())
        return *beside;

    // Another CD: the user inserts it (or finds the folder) and tells us where it is.
    const QString chosen = ui().browseForFolder(
        m_owner, QStringLiteral("Insert or choose the volume ") + shownText(volumeName));
    if (chosen.isEmpty())
        return {};
    if (!QFileInfo(documentIn(chosen, storedName)).isFile()) {
        ui().messageBox(QStringLiteral("%1 is not the volume %2: its \"Document\" folder does not "
                                       "hold %3.")
                            .arg(native(chosen), shownText(volumeName), shownText(storedName)),
                        MessageStyle::OkOnly | MessageStyle::Exclamation,
                        QStringLiteral("Open document"));
        return {};
    }
    const QString folder = QFileInfo(chosen).absoluteFilePath();
    m_session.rememberVolume(volumeName, folder);
    return folder;
}

} // namespace vx::viewer
