#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdint>
#include <cstring>

// Helpers shared by the harnesses: reading typed values off the input and a scratch folder.
namespace vx::fuzz {

class Input {
public:
    Input(const uint8_t* data, size_t size)
        : m_data(data)
        , m_size(size) {}

    bool empty() const { return m_at >= m_size; }
    uint8_t byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    template <typename T>
    T number() {
        T value{};
        const size_t n = std::min(sizeof(T), m_size - std::min(m_at, m_size));
        std::memcpy(&value, m_data + m_at, n);
        m_at += n;
        return value;
    }
    // Up to `limit` bytes, ended early by a zero byte.
    QByteArray bytes(size_t limit) {
        const size_t start = m_at;
        while (m_at < m_size && m_at - start < limit && m_data[m_at] != 0)
            ++m_at;
        QByteArray result(reinterpret_cast<const char*>(m_data + start), qsizetype(m_at - start));
        if (m_at < m_size && m_data[m_at] == 0)
            ++m_at;
        return result;
    }
    QString text(size_t limit) { return QString::fromUtf8(bytes(limit)); }
    // Exactly `count` bytes, or what is left.
    QByteArray raw(size_t count) {
        const size_t start = std::min(m_at, m_size);
        const size_t n = std::min(count, m_size - start);
        m_at = start + n;
        return QByteArray(reinterpret_cast<const char*>(m_data + start), qsizetype(n));
    }
    QByteArray rest() {
        const size_t start = std::min(m_at, m_size);
        m_at = m_size;
        return QByteArray(reinterpret_cast<const char*>(m_data + start), qsizetype(m_size - start));
    }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_at = 0;
};

// One folder for the whole run, emptied by its owner between inputs.
inline const QTemporaryDir& scratch() {
    static QTemporaryDir folder;
    return folder;
}

inline QString writeScratchFile(const QString& name, const QByteArray& bytes) {
    const QString path = QDir(scratch().path()).filePath(name);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
    return path;
}

} // namespace vx::fuzz
