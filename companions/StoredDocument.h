#pragma once

#include <QDir>
#include <QString>

namespace vx {

// A document on its way into a shared document folder. The copy, the slow part, is written
// first under a hidden working name of the filer's own, before any transaction; once the item
// id is known the finished copy is moved under its stored name: "<id>.<ext>" or, when that
// exists, "<id>_<n>.<ext>" with the first free n (the extension cut so that the whole stays
// within 20 characters). The name is taken by moving the finished copy under it in one step
// that fails when the name exists, so two filers never take the same one and nobody sees a
// half-written document under a stored name. Unless kept, the file is removed when the object
// goes, under whichever name it then has.
class StoredDocument {
public:
    // Copies `source` under a working name in `staging` (a folder on the same volume; by
    // default `folder` itself); throws vx::Error when the folder takes no new file or reading
    // or writing fails (nothing is left behind then).
    StoredDocument(const QDir& folder, const QString& source, const QString& staging = {});
    ~StoredDocument();
    StoredDocument(const StoredDocument&) = delete;
    StoredDocument& operator=(const StoredDocument&) = delete;

    // Moves the copy under the item's first free stored name and returns that name; throws
    // vx::Error when no name can be taken.
    QString placeAs(qint32 itemId, const QString& extension);
    // Gives the stored name up again (the filing run that took it failed): the copy goes back
    // under its working name, ready to be placed under other ids. Never throws; a copy that
    // cannot be moved back is removed, and the next placeAs says so.
    void withdraw() noexcept;
    // The filing committed: the file stays where it is.
    void keep();

    QString name() const { return m_name; }
    QString path() const;

private:
    QDir m_folder;
    QDir m_staging;
    QString m_workingName;
    QString m_name; // the stored name while placed
    bool m_lost = false;
    bool m_kept = false;
};

} // namespace vx
