#include "ExportVolume.h"

#include "data/Error.h"

#include <QDir>
#include <QFileInfo>

namespace vx::viewer {

namespace {

const QString DatabaseName = QStringLiteral("veltrane.znl");
const QString QueryFormName = QStringLiteral("veltrane.xqr");
const QString DataLinkName = QStringLiteral("veltrane.udl");
const QString DocumentName = QStringLiteral("Document");
const QString ReadMeName = QStringLiteral("ReadMe.txt");

QString native(const QString& path) {
    return QDir::toNativeSeparators(path);
}

Error notAnExport(const QString& path) {
    return Error(ErrorNumber::InvalidArgument,
                 QStringLiteral("%1 is not a portable export. Expected either a volume folder "
                                "holding \"%2\", \"%3\" and a \"%4\" folder, or an export folder "
                                "holding \"%5\" and such volume folders.")
                     .arg(native(path), DatabaseName, QueryFormName, DocumentName, ReadMeName));
}

QStringList volumeFoldersIn(const QString& parent) {
    QStringList volumes;
    const QDir dir(parent);
    for (const QString& name : dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString folder = dir.filePath(name);
        if (ExportVolume::looksLikeVolume(folder))
            volumes << folder;
    }
    return volumes;
}

ExportVolume volumeAt(const QString& folder) {
    QStringList missing;
    for (const QString& part : {DatabaseName, QueryFormName, DataLinkName})
        if (!QFileInfo(QDir(folder).filePath(part)).isFile())
            missing << u'"' + part + u'"';
    if (!QFileInfo(QDir(folder).filePath(DocumentName)).isDir())
        missing << QStringLiteral("the \"%1\" folder").arg(DocumentName);
    if (!missing.isEmpty())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The export volume %1 is incomplete: %2 %3 missing. Copy the "
                                   "volume again from the export or its CD.")
                        .arg(native(folder), missing.join(QStringLiteral(", ")),
                             missing.size() == 1 ? QStringLiteral("is") : QStringLiteral("are")));
    ExportVolume volume;
    volume.folder = QFileInfo(folder).absoluteFilePath();
    volume.name = QFileInfo(volume.folder).fileName();
    const QString parent = QFileInfo(volume.folder).absolutePath();
    if (parent != volume.folder) {
        for (const QString& other : volumeFoldersIn(parent)) {
            const QString absolute = QFileInfo(other).absoluteFilePath();
            if (absolute != volume.folder)
                volume.neighbours.insert(QFileInfo(absolute).fileName(), absolute);
        }
    }
    return volume;
}

} // namespace

QString ExportVolume::databasePath() const {
    return QDir(folder).filePath(DatabaseName);
}

QString ExportVolume::queryFormPath() const {
    return QDir(folder).filePath(QueryFormName);
}

QString ExportVolume::dataLinkPath() const {
    return QDir(folder).filePath(DataLinkName);
}

QString ExportVolume::documentFolder() const {
    return QDir(folder).filePath(DocumentName);
}

bool ExportVolume::looksLikeVolume(const QString& folder) {
    const QDir dir(folder);
    return QFileInfo(dir.filePath(DatabaseName)).isFile() ||
           QFileInfo(dir.filePath(QueryFormName)).isFile() ||
           QFileInfo(dir.filePath(DocumentName)).isDir();
}

bool ExportVolume::isCompleteVolume(const QString& folder) {
    const QDir dir(folder);
    return QFileInfo(dir.filePath(DatabaseName)).isFile() &&
           QFileInfo(dir.filePath(DocumentName)).isDir();
}

ExportVolume ExportVolume::open(const QString& path) {
    const QFileInfo info(path);
    if (path.trimmed().isEmpty() || !info.isDir())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("%1 is not a folder. Give the folder of an export volume or "
                                   "of a whole export.")
                        .arg(path.trimmed().isEmpty() ? QStringLiteral("\"\"") : native(path)));
    const QString folder = info.absoluteFilePath();
    if (looksLikeVolume(folder))
        return volumeAt(folder);
    if (QFileInfo(QDir(folder).filePath(ReadMeName)).isFile()) {
        const QStringList volumes = volumeFoldersIn(folder);
        if (!volumes.isEmpty())
            return volumeAt(volumes.first());
    }
    throw notAnExport(folder);
}

} // namespace vx::viewer
