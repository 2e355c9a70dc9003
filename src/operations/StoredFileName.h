#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <VXUILib/vxuilib_export.h>
#include <optional>

namespace vx {

// Stored file names (KTFile.fName) are data anyone with the repository's credentials can write:
// a document file is written into a folder the user chose only under a plain name, never
// through a path the name spells.

// Why `name` is not a plain file name; empty when it is one.
VXUILIB_EXPORT QString storedNameProblem(const QString& name);

// The path of `name` inside `folder`, when the name is plain and the path stays in the folder.
VXUILIB_EXPORT std::optional<QString> pathInsideFolder(const QString& folder, const QString& name);

// Why the document file at `path` must not be read; empty when it may. A file that is a
// symbolic link leading out of its own folder was planted to make a copy read someone else's
// file.
VXUILIB_EXPORT QString documentFileProblem(const QString& path);

// Why the document file at `path` is not handed to the desktop to open; empty when it may be.
// Opening runs whatever the desktop runs for the file's type: a stored name ending in ".exe",
// ".desktop" or ".lnk" would run a program someone put into the repository.
VXUILIB_EXPORT QString openingProblem(const QString& path);

// The names one operation writes into a folder: a name that differs from an earlier one only
// in case would replace that file on a file system that ignores case.
class VXUILIB_EXPORT FolderNames {
public:
    // False when a different earlier name folds to the same one; the same name again is no
    // collision (it names the same file).
    bool claim(const QString& name);

private:
    QHash<QString, QString> m_byFolded;
};

// Documents an operation skipped for their stored names, told to the user once at its end.
class VXUILIB_EXPORT SkippedDocuments {
public:
    // `reason` defaults to what is wrong with the stored name.
    void add(qint32 itemId, const QString& storedName, const QString& reason = {});
    bool isEmpty() const { return m_items.isEmpty(); }
    // The message naming every skipped item, its stored name (escaped) and why.
    QString message() const;
    // Shows message() (exclamation icon, OK) when something was skipped.
    void report(const QString& title) const;

private:
    struct Item {
        qint32 itemId;
        QString storedName;
        QString reason;
    };
    QList<Item> m_items;
};

} // namespace vx
