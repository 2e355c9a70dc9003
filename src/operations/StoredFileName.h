#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <optional>

namespace vx {

// Stored file names (KTFile.fName) are data anyone with the repository's credentials can write:
// a document file is written into a folder the user chose only under a plain name, never
// through a path the name spells.

// Why `name` is not a plain file name; empty when it is one.
QString storedNameProblem(const QString& name);

// The path of `name` inside `folder`, when the name is plain and the path stays in the folder.
std::optional<QString> pathInsideFolder(const QString& folder, const QString& name);

// Documents an operation skipped for their stored names, told to the user once at its end.
class SkippedDocuments {
public:
    void add(qint32 itemId, const QString& storedName);
    bool isEmpty() const { return m_items.isEmpty(); }
    // The message naming every skipped item and its stored name.
    QString message() const;
    // Shows message() (exclamation icon, OK) when something was skipped.
    void report(const QString& title) const;

private:
    QList<QPair<qint32, QString>> m_items;
};

} // namespace vx
