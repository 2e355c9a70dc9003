#pragma once

#include <QString>
#include <QStringList>

namespace vx::demo {

// The host's answer to the hit list's question "where is this document's file?": the folders
// the repository lists in KTPath are searched for the stored file name.
class DocumentLocator {
public:
    // Reads the document folders of the repository named by the initialisation file; throws
    // vx::Error when the repository cannot be opened.
    explicit DocumentLocator(const QString& initFilePath);
    // For tests and hosts that know their folders already.
    explicit DocumentLocator(QStringList folders);

    // The full path of a stored file, or "ERROR" when no document folder holds it.
    QString locate(const QString& storedName) const;
    // As locate(), for a document known by its item id when the event gave no file name.
    QString locateItem(qint32 itemId, const QString& storedName) const;

    QStringList folders() const { return m_folders; }

    static inline const QString NotFound = QStringLiteral("ERROR");

private:
    QString m_initFilePath;
    QStringList m_folders;
};

} // namespace vx::demo
