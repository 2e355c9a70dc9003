#include "data/dbf/ChunkWriter.h"

#include "data/Error.h"
#include "data/dbf/FileWrites.h"

#include <QFile>

namespace vx::dbf {

ChunkWriter::ChunkWriter(QFile& file, std::function<void(qint64 end)> afterChunk)
    : m_file(file)
    , m_afterChunk(std::move(afterChunk)) {}

ChunkWriter::~ChunkWriter() {
    if (!m_thread.joinable())
        return;
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_chunks.empty() && !m_writing; });
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

QByteArray ChunkWriter::submit(qint64 position, QByteArray bytes) {
    std::unique_lock lock(m_mutex);
    if (!m_thread.joinable())
        m_thread = std::thread([this] { run(); });
    m_changed.wait(lock, [this] { return m_chunks.size() < 2 || !m_failure.isEmpty(); });
    throwFailure();
    m_chunks.push_back({position, std::move(bytes)});
    QByteArray next = std::move(m_spare);
    m_spare = QByteArray();
    lock.unlock();
    m_changed.notify_all();
    return next;
}

void ChunkWriter::drain() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_chunks.empty() && !m_writing; });
    throwFailure();
}

void ChunkWriter::settle() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_chunks.empty() && !m_writing; });
    m_failure.clear();
    m_failed = false;
}

void ChunkWriter::throwFailure() {
    if (m_failure.isEmpty())
        return;
    const QString failure = m_failure;
    m_failure.clear(); // reported once; the caller gives up on the file
    throw Error(ErrorNumber::Unspecified, failure);
}

void ChunkWriter::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || !m_chunks.empty(); });
        if (m_chunks.empty())
            return;
        Chunk chunk = std::move(m_chunks.front());
        m_chunks.pop_front();
        const bool skip = m_failed; // after a gap nothing more belongs in the file
        m_writing = true;
        lock.unlock();
        QString failure;
        if (!skip) {
            const QString cause =
                writeFully(m_file, chunk.position, chunk.bytes.constData(), chunk.bytes.size());
            if (!cause.isEmpty()) {
                failure =
                    QStringLiteral("Cannot write the file '%1': %2").arg(m_file.fileName(), cause);
            } else if (m_afterChunk) {
                try {
                    m_afterChunk(chunk.position + chunk.bytes.size());
                } catch (const Error& error) {
                    failure = error.description();
                }
            }
        }
        chunk.bytes.resize(0);
        lock.lock();
        m_writing = false;
        if (!failure.isEmpty()) {
            m_failed = true;
            if (m_failure.isEmpty())
                m_failure = failure;
        }
        m_spare = std::move(chunk.bytes);
        m_changed.notify_all();
    }
}

} // namespace vx::dbf
