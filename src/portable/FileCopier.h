#pragma once

#include <QByteArray>
#include <QString>

class QFile;

namespace vx {

// Copies files over existing ones for an export. Where the system can, the kernel copies (or
// clones) the bytes itself; elsewhere they pass through one buffer kept for all the copies.
// Nothing is synced to the disk (QFile::copy does, which made an export of a few thousand
// documents take fifteen times as long).
class FileCopier {
public:
    // Copies `from` to `to`, writing over an existing file in place (a fresh file for each copy
    // costs the file system far more); one that cannot be opened for writing is replaced. Throws
    // vx::Error 53 "File not found: ..." when `from` is not a readable file; never leaves half a
    // file behind.
    void copyOverwriting(const QString& from, const QString& to);

private:
    // Copies the bytes of the open `source` (`size` bytes as last seen) to the open `target`;
    // false with `reason` set when reading or writing fails.
    bool copyBytes(QFile& source, QFile& target, qint64 size, QString& reason);

    QByteArray m_buffer;
    // Cleared once the file systems involved turn out not to support the call.
    bool m_tryClone = true;
    bool m_tryKernelCopy = true;
};

} // namespace vx
