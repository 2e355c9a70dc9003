#include "data/postgres/PostgresBinaryCells.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace vx::postgres {

namespace {

constexpr qint64 secondsPerDay = 86400;
// The server counts days and microseconds from 2000-01-01.
constexpr qint64 serverEpochJulianDay = 2451545;
// Years 1 to 9999: what a stored date's text can hold.
constexpr qint64 firstJulianDay = 1721426; // 0001-01-01
constexpr qint64 lastJulianDay = 5373484;  // 9999-12-31
// A time of day lies on the zero day, 1899-12-30.
constexpr qint64 zeroJulianDay = 2415019;

quint16 read16(const char* p) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return quint16((b[0] << 8) | b[1]);
}
quint32 read32(const char* p) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return (quint32(b[0]) << 24) | (quint32(b[1]) << 16) | (quint32(b[2]) << 8) | quint32(b[3]);
}
quint64 read64(const char* p) {
    return (quint64(read32(p)) << 32) | read32(p + 4);
}

qint64 floorDivide(qint64 value, qint64 divisor) {
    qint64 quotient = value / divisor;
    if (value % divisor != 0 && value < 0)
        --quotient;
    return quotient;
}

void appendSeconds(RowStore& rows, qint64 julianDay, qint64 seconds) {
    if (julianDay < firstJulianDay || julianDay > lastJulianDay)
        rows.appendNull();
    else
        rows.appendDateTime(julianDay * secondsPerDay + seconds);
}

void appendTimestamp(RowStore& rows, qint64 microseconds) {
    if (microseconds == std::numeric_limits<qint64>::max() ||
        microseconds == std::numeric_limits<qint64>::min()) {
        rows.appendNull(); // infinity
        return;
    }
    // Fractions of a second are dropped, as the stored text's reader drops them.
    const qint64 seconds = floorDivide(microseconds, 1'000'000);
    const qint64 day = floorDivide(seconds, secondsPerDay);
    appendSeconds(rows, serverEpochJulianDay + day, seconds - day * secondsPerDay);
}

// A real's text is its shortest exact form, which is read back as a double.
void appendFloat4(RowStore& rows, const char* data) {
    const quint32 bits = read32(data);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) {
        rows.appendReal(double(value));
        return;
    }
    char text[32];
    const auto written = std::to_chars(text, text + sizeof text, value);
    double widened = 0;
    std::from_chars(text, written.ptr, widened);
    rows.appendReal(widened);
}

// numeric: digit count, weight (of the first base-10000 digit), sign, display scale, digits.
void appendNumeric(RowStore& rows, const char* data, int size) {
    if (size < 8) {
        rows.appendNull();
        return;
    }
    const int digits = qint16(read16(data));
    const int weight = qint16(read16(data + 2));
    const quint16 sign = read16(data + 4);
    if (sign == 0xC000) {
        rows.appendReal(std::numeric_limits<double>::quiet_NaN());
        return;
    }
    if (sign == 0xD000 || sign == 0xF000) {
        const double infinity = std::numeric_limits<double>::infinity();
        rows.appendReal(sign == 0xD000 ? infinity : -infinity);
        return;
    }
    if (digits < 0 || size < 8 + 2 * digits) {
        rows.appendNull();
        return;
    }
    // The decimal text of the value, read as the text form is: the same double, rounded once.
    // The digits after the last base-10000 digit are zeros and do not change the value.
    std::array<char, 128> small;
    std::string large;
    const std::size_t needed = std::size_t(4 * digits + 16);
    char* text = small.data();
    if (needed > small.size()) {
        large.resize(needed);
        text = large.data();
    }
    char* out = text;
    if (sign == 0x4000)
        *out++ = '-';
    if (digits == 0) {
        *out++ = '0';
    } else {
        for (int i = 0; i < digits; ++i) {
            const int digit = read16(data + 8 + 2 * i);
            *out++ = char('0' + digit / 1000);
            *out++ = char('0' + digit / 100 % 10);
            *out++ = char('0' + digit / 10 % 10);
            *out++ = char('0' + digit % 10);
        }
        // digit i stands for 10000^(weight - i): an exponent moves the point.
        const int exponent = 4 * (weight - digits + 1);
        *out++ = 'e';
        out = std::to_chars(out, text + needed, exponent).ptr;
    }
    double value = 0;
    std::from_chars(text, out, value);
    rows.appendReal(value);
}

} // namespace

bool readsBinary(std::span<const Oid> types) {
    return std::all_of(types.begin(), types.end(), [](Oid type) {
        switch (type) {
        case TypeOid::Bool:
        case TypeOid::Bytea:
        case TypeOid::Char:
        case TypeOid::Name:
        case TypeOid::Int8:
        case TypeOid::Int2:
        case TypeOid::Int4:
        case TypeOid::Text:
        case TypeOid::ObjectId:
        case TypeOid::Float4:
        case TypeOid::Float8:
        case TypeOid::BpChar:
        case TypeOid::VarChar:
        case TypeOid::Date:
        case TypeOid::Time:
        case TypeOid::Timestamp:
        case TypeOid::Numeric:
            return true;
        default:
            return false;
        }
    });
}

void appendBinaryCell(RowStore& rows, Oid type, const char* data, int size) {
    switch (type) {
    case TypeOid::Bool:
        rows.appendInteger(size > 0 && data[0] ? -1 : 0);
        return;
    case TypeOid::Int2:
        rows.appendInteger(qint16(read16(data)));
        return;
    case TypeOid::Int4:
        rows.appendInteger(qint32(read32(data)));
        return;
    case TypeOid::ObjectId:
        rows.appendInteger(read32(data));
        return;
    case TypeOid::Int8:
        rows.appendInteger(qint64(read64(data)));
        return;
    case TypeOid::Float4:
        appendFloat4(rows, data);
        return;
    case TypeOid::Float8: {
        const quint64 bits = read64(data);
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        rows.appendReal(value);
        return;
    }
    case TypeOid::Numeric:
        appendNumeric(rows, data, size);
        return;
    case TypeOid::Date: {
        const qint32 days = qint32(read32(data));
        if (days == std::numeric_limits<qint32>::max() ||
            days == std::numeric_limits<qint32>::min())
            rows.appendNull(); // infinity
        else
            appendSeconds(rows, serverEpochJulianDay + days, 0);
        return;
    }
    case TypeOid::Timestamp:
        appendTimestamp(rows, qint64(read64(data)));
        return;
    case TypeOid::Time: {
        const qint64 seconds = qint64(read64(data)) / 1'000'000;
        // "24:00:00" has no place on the zero day, as its text has none
        if (seconds < 0 || seconds >= secondsPerDay)
            rows.appendNull();
        else
            rows.appendDateTime(zeroJulianDay * secondsPerDay + seconds);
        return;
    }
    default: // text of every kind, and bytea's bytes as they are
        rows.appendText(data, size);
        return;
    }
}

} // namespace vx::postgres
