#pragma once

#include "data/dbf/ChunkWriter.h"

#include <QByteArray>
#include <QFile>
#include <QString>

namespace vx::dbf {

// The memo file beside a table (".fpt"): a 512-byte header holding the next free block and the
// block size, then each memo in whole 64-byte blocks (type and length big-endian, then the text).
// New memos are buffered and written in large pieces on a writer thread; flush() waits for them.
// The header's next free block follows each piece written, so the header always describes the
// whole memos on disk; after a failed write recover() cuts the file back to them.
class FptMemoFile {
public:
    static constexpr int BlockSize = 64;
    static constexpr int HeaderLength = 512;

    // Throws vx::Error when the file cannot be made or opened.
    void create(const QString& path);
    void openExisting(const QString& path);
    bool isOpen() const { return m_file.isOpen(); }

    // Stores the text and returns its first block; empty text is stored as no memo (block 0).
    quint32 append(const QByteArray& text);
    // The same for text in the tables' code page, encoded straight into the buffer.
    quint32 append(QStringView text);
    void flush();
    void close();
    // After a failed write: waits for the writer, cuts the file back after the last memo that
    // is whole on disk, rewrites the header, and returns the next free block (memos at or after
    // it are gone). Best effort: a failure here leaves the file no worse.
    quint32 recover();

    // A memo's text; empty for block 0. Flushes first.
    QByteArray read(quint32 block);

private:
    template <typename Fill>
    quint32 appendWith(qsizetype length, Fill fill);
    QByteArray headerBytes() const;
    void writeAt(qint64 position, const QByteArray& bytes);
    void writeNextFree(quint32 block);

    QFile m_file;
    // After the file: finishes its writes before the file closes.
    ChunkWriter m_writer{m_file, [this](qint64 end) { writeNextFree(quint32(end / BlockSize)); }};
    quint32 m_nextBlock = HeaderLength / BlockSize;
    quint32 m_flushedBlock = HeaderLength / BlockSize; // first block of what is pending
    QByteArray m_pending;
    quint32 m_durableBlock = HeaderLength / BlockSize; // next free block as the header has it
};

} // namespace vx::dbf
