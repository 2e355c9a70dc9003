#include "core/ViewerFiles.h"

#include "data/ConnectionProperties.h"
#include "data/Error.h"

#include <QDir>
#include <QSaveFile>

namespace vx::repo {

namespace {

void writeStandIn(const QString& path, const QByteArray& text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
}

} // namespace

void writeViewerFiles(const QString& dir) {
    const QString folder = QDir(dir).filePath(ViewerFolderName);
    if (!QDir().mkpath(folder))
        throw Error(ErrorNumber::Unspecified, QStringLiteral("Cannot create %1").arg(folder));
    writeStandIn(QDir(folder).filePath(QStringLiteral("veltrane.exe")),
                 "Stand-in for the CD viewer program veltrane.exe, which a portable export "
                 "copies into every volume.\r\n");
    writeStandIn(QDir(folder).filePath(QStringLiteral("veltrane.chm")),
                 "Stand-in for the CD viewer's help file veltrane.chm, which a portable export "
                 "copies into every volume.\r\n");
    // Relative, so the viewer opens the database beside the link wherever the volume is copied;
    // read-only and immutable, so reading a volume (on a CD or not) never writes beside it.
    writeDataLinkFile(QDir(folder).filePath(QStringLiteral("veltrane.udl")),
                      QStringLiteral("Provider=SQLite;Data Source=veltrane.znl;Mode=Read;"
                                     "Immutable=True"));
}

} // namespace vx::repo
