#include "data/dbf/FptMemoFile.h"

#include "data/Error.h"
#include "data/dbf/Cp1252.h"
#include "data/dbf/FileWrites.h"

#include <QtEndian>
#include <cstring>

namespace vx::dbf {

namespace {

constexpr quint32 textMemo = 1;
// Pieces handed to the writer: small enough to stay in the processor's cache while they are
// filled, large enough that the system calls do not count.
constexpr qsizetype pendingLimit = 1 << 18;
// Buffers are reserved this much beyond the limit, for the memo that crosses it.
constexpr qsizetype reserveMargin = 64 << 10;

Error fileError(const QFile& file, const QString& what) {
    return Error(ErrorNumber::Unspecified, QStringLiteral("Cannot %1 the memo file '%2': %3")
                                               .arg(what, file.fileName(), file.errorString()));
}

} // namespace

QByteArray FptMemoFile::headerBytes() const {
    QByteArray header(HeaderLength, '\0');
    qToBigEndian(m_nextBlock, header.data());
    qToBigEndian(quint16(BlockSize), header.data() + 6);
    return header;
}

void FptMemoFile::writeAt(qint64 position, const QByteArray& bytes) {
    writeOrThrow(m_file, position, bytes.constData(), bytes.size(), QStringLiteral("memo file"));
}

void FptMemoFile::writeNextFree(quint32 block) {
    char bytes[4];
    qToBigEndian(block, bytes);
    writeOrThrow(m_file, 0, bytes, 4, QStringLiteral("memo file"));
}

void FptMemoFile::create(const QString& path) {
    m_file.setFileName(path);
    // Unbuffered: a write the system refuses fails there and then, with its cause.
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered))
        throw fileError(m_file, QStringLiteral("create"));
    m_nextBlock = m_flushedBlock = m_durableBlock = HeaderLength / BlockSize;
    writeAt(0, headerBytes());
}

void FptMemoFile::openExisting(const QString& path) {
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        throw fileError(m_file, QStringLiteral("open"));
    const QByteArray header = m_file.read(8);
    const auto* data = reinterpret_cast<const uchar*>(header.constData());
    if (header.size() < 8 || qFromBigEndian<quint16>(data + 6) != BlockSize)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("'%1' is not a memo file with %2-byte blocks.")
                        .arg(path)
                        .arg(BlockSize));
    m_nextBlock = m_flushedBlock = m_durableBlock = qFromBigEndian<quint32>(data);
}

template <typename Fill>
quint32 FptMemoFile::appendWith(qsizetype length, Fill fill) {
    if (length == 0)
        return 0;
    if (m_pending.capacity() == 0)
        m_pending.reserve(pendingLimit + reserveMargin);
    const quint32 block = m_nextBlock;
    const qsizetype blocks = (8 + length + BlockSize - 1) / BlockSize;
    const qsizetype start = m_pending.size();
    m_pending.resize(start + blocks * BlockSize);
    char* memo = m_pending.data() + start;
    qToBigEndian(textMemo, memo);
    qToBigEndian(quint32(length), memo + 4);
    fill(memo + 8);
    // The rest of the last block stays zero, as the format has it.
    std::memset(memo + 8 + length, 0, size_t(blocks * BlockSize - 8 - length));
    m_nextBlock += quint32(blocks);
    if (m_pending.size() >= pendingLimit) {
        m_pending = m_writer.submit(qint64(m_flushedBlock) * BlockSize, std::move(m_pending));
        m_pending.reserve(pendingLimit + reserveMargin);
        m_flushedBlock = m_nextBlock;
    }
    return block;
}

quint32 FptMemoFile::append(const QByteArray& text) {
    return appendWith(text.size(), [&](char* out) { std::copy(text.begin(), text.end(), out); });
}

quint32 FptMemoFile::append(QStringView text) {
    return appendWith(text.size(), [&](char* out) { toCp1252(text, out, text.size()); });
}

void FptMemoFile::flush() {
    if (!m_file.isOpen())
        return;
    if (!m_pending.isEmpty())
        m_pending = m_writer.submit(qint64(m_flushedBlock) * BlockSize, std::move(m_pending));
    m_writer.drain();
    m_flushedBlock = m_nextBlock;
    writeAt(0, headerBytes().left(8));
    m_durableBlock = m_nextBlock;
}

quint32 FptMemoFile::recover() {
    if (!m_file.isOpen())
        return m_durableBlock;
    m_writer.settle();
    // Memos went out in order after the last counted one: walk those that are whole on disk.
    const qint64 size = m_file.size();
    quint32 block = m_durableBlock;
    while (block < m_nextBlock && qint64(block) * BlockSize + 8 <= size &&
           m_file.seek(qint64(block) * BlockSize)) {
        char header[8];
        if (m_file.read(header, 8) != 8 || qFromBigEndian<quint32>(header) != textMemo)
            break;
        const qint64 blocks =
            (8 + qint64(qFromBigEndian<quint32>(header + 4)) + BlockSize - 1) / BlockSize;
        if ((qint64(block) + blocks) * BlockSize > size || block + blocks > m_nextBlock)
            break;
        block += quint32(blocks);
    }
    m_durableBlock = block;
    m_pending.clear();
    m_nextBlock = m_flushedBlock = m_durableBlock;
    // Shrinking needs no room on the disk; the header is rewritten where it stands.
    m_file.resize(qint64(m_durableBlock) * BlockSize);
    try {
        writeNextFree(m_durableBlock);
    } catch (const Error&) { // the failure being recovered from is what gets reported
    }
    return m_durableBlock;
}

void FptMemoFile::close() {
    flush();
    m_file.close();
}

QByteArray FptMemoFile::read(quint32 block) {
    if (block == 0)
        return {};
    flush();
    if (!m_file.seek(qint64(block) * BlockSize))
        throw fileError(m_file, QStringLiteral("read"));
    const QByteArray header = m_file.read(8);
    if (header.size() < 8)
        throw fileError(m_file, QStringLiteral("read"));
    const quint32 length = qFromBigEndian<quint32>(header.constData() + 4);
    // The length is the file's word: reading takes room for all of it before looking, so a
    // damaged or crafted one could ask for gigabytes.
    if (qint64(length) > m_file.size() - m_file.pos())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot read the memo file '%1': the memo at block %2 claims "
                                   "%3 bytes, more than the file holds.")
                        .arg(m_file.fileName())
                        .arg(block)
                        .arg(length));
    const QByteArray text = m_file.read(length);
    if (text.size() != qsizetype(length))
        throw fileError(m_file, QStringLiteral("read"));
    return text;
}

} // namespace vx::dbf
