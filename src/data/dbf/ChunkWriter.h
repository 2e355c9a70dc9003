#pragma once

#include <QByteArray>
#include <QString>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

class QFile;

namespace vx::dbf {

// Writes buffers to a file on a thread of its own, in the order given, so that filling the next
// buffer overlaps the system's copying of the last one: a large export then costs little more
// than its own encoding. At most two buffers wait while another is being written. The file must
// not be touched otherwise until drain() returns. A failure is kept and thrown (vx::Error) by the
// next call; what was handed over after the failed buffer is dropped, so the file ends with what
// the system took of the failed buffer.
class ChunkWriter {
public:
    // `afterChunk` runs on the writer thread after each buffer is in the file, with the end of
    // what is written; it may throw vx::Error, which counts as a failed write.
    explicit ChunkWriter(QFile& file, std::function<void(qint64 end)> afterChunk = {});
    ~ChunkWriter(); // waits for what was handed over, then ends the thread
    ChunkWriter(const ChunkWriter&) = delete;
    ChunkWriter& operator=(const ChunkWriter&) = delete;

    // Takes `bytes` to be written at `position`; returns an empty buffer to fill next (one
    // already written, so its memory is reused).
    QByteArray submit(qint64 position, QByteArray bytes);
    // Returns once everything handed over is in the file.
    void drain();
    // Waits like drain() and forgets a failure instead of throwing it; for cleaning up after one.
    void settle();

private:
    struct Chunk {
        qint64 position = 0;
        QByteArray bytes;
    };
    void run();
    void throwFailure(); // with the lock held

    QFile& m_file;
    std::function<void(qint64)> m_afterChunk;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Chunk> m_chunks;
    QByteArray m_spare;
    QString m_failure;
    bool m_failed = false; // since the last settle(): later buffers are dropped
    bool m_writing = false;
    bool m_stopping = false;
    std::thread m_thread; // started with the first chunk
};

} // namespace vx::dbf
