#include "session/companions/NativeHelpers.h"

#include "session/UiServices.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

namespace vx {

qint16 KTBrowsePath(QWidget* owner, QString& buffer, const QString& title) {
    const QString chosen = ui().browseForFolder(owner, title);
    if (chosen.isEmpty())
        return 0;
    buffer = QDir::toNativeSeparators(chosen).left(PathBufferSize - 1);
    return qint16(buffer.size());
}

qint16 KTVolumeLabel(QString& label, const QString& path) {
    label.clear();
    if (path.isEmpty())
        return 0;
    // A file that does not exist yet still lies on the volume of its nearest existing folder.
    QFileInfo info(path);
    QString existing = info.absoluteFilePath();
    while (!existing.isEmpty() && !QFileInfo::exists(existing)) {
        const QString parent = QFileInfo(existing).absolutePath();
        if (parent == existing)
            break;
        existing = parent;
    }
    const QStorageInfo storage(existing);
    if (!storage.isValid())
        return 0;
    label = storage.name().left(VolumeLabelSize);
    return qint16(label.size());
}

} // namespace vx
