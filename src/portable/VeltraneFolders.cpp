#include "portable/VeltraneFolders.h"

#include <QDir>
#include <QFile>
#include <algorithm>

namespace vx {

void RemoveVeltraneFolders(const QStringList& createdFolders, qint16 count) {
    const qsizetype last = std::min<qsizetype>(count, createdFolders.size());
    for (qsizetype i = last; i >= 1; --i) {
        const QDir folder(createdFolders.at(i - 1));
        for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden | QDir::System))
            QFile::remove(folder.filePath(name));
    }
    // Children were created after their parents, so the reverse order empties each folder first.
    for (qsizetype i = last; i >= 1; --i)
        QDir().rmdir(createdFolders.at(i - 1));
}

} // namespace vx
