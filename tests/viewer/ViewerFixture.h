#pragma once

#include "portable/PortableExport.h"
#include "portable/PortableFixture.h"

#include <QDateTime>
#include <QDirIterator>
#include <QMap>
#include <QProcess>

namespace vx::test {

// The sample exported for the viewer: to a folder, or to CD volumes of 10 MB with every
// document counted as 6 MB, so the documents spread over several volumes.
class ViewerFixture : public PortableFixture {
protected:
    enum class Medium { Folder, Cd };

    ViewerFixture() { stateRoot = QDir(environment.path()).filePath("viewer-state"); }

    // The live documents of the sample (deleted ones are not searched), in id order.
    QList<qint32> liveItems() const {
        QList<qint32> ids;
        for (const QString& id :
             rowsOf(hitList->connection(), "SELECT itemid FROM KTItem WHERE deleted = 0 ORDER BY "
                                           "itemid"))
            ids << id.toInt();
        return ids;
    }

    // Exports the given items (all live ones when empty); returns the export root.
    QString exportSample(Medium medium, QList<qint32> items = {}) {
        hitList->selection = items.isEmpty() ? liveItems() : items;
        if (medium == Medium::Cd) {
            for (qint32 id : hitList->selection)
                setFileSize(id, 6 * 1048576);
            chooseMedium(MediaDialog::CustomCd, "10", "Veltran");
        } else {
            chooseMedium(MediaDialog::FullExport);
        }
        environment.ui().answerFolder(destination);
        exportToVeltrane(*hitList);
        environment.ui().onProcessEvents({});
        environment.ui().clearPrompts(); // the export's own questions
        return exportRoot();
    }

    // The volume folders of an export, by name.
    static QStringList volumesOf(const QString& root) {
        return QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

    // Rows of a query by the sqlite3 command-line tool on a volume's database, opened so that
    // it leaves the folder untouched.
    static QStringList sqliteRows(const QString& volumeFolder, const QString& sql) {
        QProcess sqlite;
        const QString uri =
            QUrl::fromLocalFile(volumeFolder + "/veltrane.znl").toString() + "?immutable=1";
        sqlite.start("sqlite3", {"-readonly", uri, sql});
        if (!sqlite.waitForFinished(60000) || sqlite.exitCode() != 0) {
            ADD_FAILURE() << "sqlite3 failed: " << sqlite.readAllStandardError().toStdString();
            return {};
        }
        return QString::fromUtf8(sqlite.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    }

    // Every file and folder under a folder with its size and modification time.
    static QMap<QString, QString> snapshot(const QString& folder) {
        QMap<QString, QString> entries;
        QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                        QDirIterator::Subdirectories);
        entries.insert(".", QFileInfo(folder).lastModified().toString(Qt::ISODateWithMs));
        while (it.hasNext()) {
            const QFileInfo info(it.next());
            entries.insert(QDir(folder).relativeFilePath(info.filePath()),
                           QString::number(info.size()) + " " +
                               info.lastModified().toString(Qt::ISODateWithMs));
        }
        return entries;
    }

    QString stateRoot;
};

} // namespace vx::test
