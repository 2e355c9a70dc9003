#include "DocumentLocator.h"

#include "data/Recordset.h"
#include "operations/StoredFileName.h"
#include "session/Conversions.h"
#include "session/GroupConnection.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace vx::demo {

DocumentLocator::DocumentLocator(const QString& initFilePath)
    : m_initFilePath(initFilePath) {
    Connection connection = openGroupConnection(initFilePath);
    Recordset paths;
    paths.open(QStringLiteral("select * from KTPath"), connection);
    for (; !paths.eof(); paths.moveNext()) {
        const QString folder = paths.value(QStringLiteral("Path")).toString().trimmed();
        if (!folder.isEmpty() && !m_folders.contains(folder))
            m_folders << QDir::fromNativeSeparators(folder);
    }
}

DocumentLocator::DocumentLocator(QStringList folders)
    : m_folders(std::move(folders)) {}

QString DocumentLocator::locate(const QString& storedName) const {
    // A stored name is a bare file name; anything with a folder part is not ours to follow.
    const QString name = storedName.trimmed();
    if (!storedNameProblem(name).isEmpty())
        return NotFound;
    // A link planted in a document folder must not hand out a file from elsewhere.
    const auto usable = [](const QFileInfo& file) {
        return file.isFile() && documentFileProblem(file.filePath()).isEmpty();
    };
    for (const QString& folder : m_folders) {
        const QFileInfo direct(QDir(folder).filePath(name));
        if (usable(direct))
            return QDir::toNativeSeparators(direct.absoluteFilePath());
    }
    // A path may be the root of the group folders below it. The name is compared, never used
    // as a pattern: "*" would find any document.
    for (const QString& folder : m_folders) {
        QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QFileInfo file(files.next());
            if (file.fileName() == name && usable(file))
                return QDir::toNativeSeparators(file.absoluteFilePath());
        }
    }
    return NotFound;
}

QString DocumentLocator::locateItem(qint32 itemId, const QString& storedName) const {
    if (!storedName.trimmed().isEmpty() || m_initFilePath.isEmpty())
        return locate(storedName);
    try {
        Connection connection = openGroupConnection(m_initFilePath);
        Recordset file;
        file.open(QStringLiteral("select * from ktfile where itemid = ") +
                      numberToText(qint64(itemId)),
                  connection);
        if (file.eof())
            return NotFound;
        return locate(file.value(QStringLiteral("fName")).toString());
    } catch (const std::exception&) {
        return NotFound;
    }
}

} // namespace vx::demo
