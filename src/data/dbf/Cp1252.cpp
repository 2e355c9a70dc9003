#include "data/dbf/Cp1252.h"

#include <algorithm>
#include <array>

namespace vx::dbf {

namespace {

// Bytes 0x80 to 0x9F; 0 marks the five the page leaves undefined.
constexpr std::array<char16_t, 32> upperControlRange = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char encodeOne(char16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return char(c);
    for (size_t i = 0; i < upperControlRange.size(); ++i) {
        if (upperControlRange[i] != 0 && upperControlRange[i] == c)
            return char(0x80 + i);
    }
    return '?';
}

} // namespace

qsizetype toCp1252(QStringView text, char* out, qsizetype capacity) {
    const qsizetype size = std::min(text.size(), capacity);
    const char16_t* in = text.utf16();
    // Mostly plain ASCII: one branch-free pass the compiler turns into vector code, and a
    // second one only for text with other characters.
    char16_t bits = 0;
    for (qsizetype i = 0; i < size; ++i) {
        bits |= in[i];
        out[i] = char(in[i]);
    }
    if (bits < 0x80)
        return size;
    for (qsizetype i = 0; i < size; ++i)
        out[i] = encodeOne(in[i]);
    return size;
}

QByteArray toCp1252(QStringView text) {
    QByteArray bytes(text.size(), Qt::Uninitialized);
    toCp1252(text, bytes.data(), bytes.size());
    return bytes;
}

QString fromCp1252(const char* bytes, qsizetype size) {
    QString text(size, Qt::Uninitialized);
    QChar* out = text.data();
    for (qsizetype i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        char16_t c = byte;
        if (byte >= 0x80 && byte <= 0x9F)
            c = upperControlRange[byte - 0x80] != 0 ? upperControlRange[byte - 0x80] : u'?';
        out[i] = QChar(c);
    }
    return text;
}

} // namespace vx::dbf
