#pragma once

#include <QDir>
#include <QFile>
#include <QString>

namespace vx {

// A stored document's name in a shared folder, taken by creating the file exclusively: "<id>.<ext>"
// or, when that exists, "<id>_<n>.<ext>" with the first free n (the extension cut so that the
// whole stays within 20 characters). Two filers can never take the same name. The file is
// removed again when the reservation is dropped without keep().
class ReservedFile {
public:
    // Throws vx::Error when no name can be created in the folder.
    ReservedFile(const QDir& folder, qint32 itemId, const QString& extension);
    ~ReservedFile();
    ReservedFile(const ReservedFile&) = delete;
    ReservedFile& operator=(const ReservedFile&) = delete;

    QString name() const { return m_name; }
    QString path() const { return m_file.fileName(); }

    // Writes the bytes of `source` into the reserved file (once, without syncing); throws
    // vx::Error when reading or writing fails.
    void copyFrom(const QString& source);
    void keep();

private:
    QString m_name;
    QFile m_file;
    bool m_kept = false;
};

} // namespace vx
