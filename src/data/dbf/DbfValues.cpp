#include "data/dbf/DbfValues.h"

#include "data/Error.h"
#include "data/dbf/Cp1252.h"

#include <QDateTime>
#include <QtEndian>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace vx::dbf {

namespace {

Error conversionError(const FieldDescriptor& field, const QVariant& value, const QString& why) {
    return Error(ErrorNumber::TypeMismatch, QStringLiteral("Cannot store \"%1\" in field %2: %3")
                                                .arg(value.toString(), field.name, why));
}

// A value and its type, looked up once: the variant's type lookup is not inlined.
struct Cell {
    const QVariant& value;
    int type;

    template <typename T>
    const T& as() const {
        return *static_cast<const T*>(value.constData());
    }
};

// The text of a value without copying a string the variant already holds.
template <typename Use>
void withText(const Cell& cell, Use use) {
    if (cell.type == QMetaType::QString)
        use(QStringView(cell.as<QString>()));
    else
        use(QStringView(cell.value.toString()));
}

void writeText(char* out, const FieldDescriptor& field, const Cell& cell) {
    withText(cell, [&](QStringView text) { toCp1252(text, out, field.length); });
}

Error numericOverflow(const FieldDescriptor& field, std::string_view text) {
    return Error(ErrorNumber::ValueDoesNotFit,
                 QStringLiteral("Numeric overflow: %1 does not fit field %2 N(%3,%4).")
                     .arg(QString::fromLatin1(text.data(), qsizetype(text.size())), field.name)
                     .arg(field.length)
                     .arg(field.decimals));
}

// Exact halves round away from zero, as the tables have always been written; the standard
// formatter rounds them to even. A double is an exact half at `decimals` places when its binary
// fraction ends exactly one place further: nudged one step outwards it rounds the other way.
// Zero is never written with a sign.
double halvesAwayFromZero(double number, int decimals) {
    if (number == 0)
        return 0.0;
    const double twice = std::ldexp(number, decimals + 1);
    const double once = std::ldexp(number, decimals);
    if (twice == std::trunc(twice) && once != std::trunc(once))
        return std::nextafter(number, number < 0 ? -INFINITY : INFINITY);
    return number;
}

// The field's text of a number: whole numbers exactly, others rounded to the field's decimals.
std::string_view formatNumber(char* buffer, std::size_t size, const FieldDescriptor& field,
                              const Cell& cell) {
    char* const end = buffer + size;
    std::to_chars_result written{};
    switch (cell.type) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
        written = std::to_chars(buffer, end,
                                cell.type == QMetaType::Int ? qint64(cell.as<int>())
                                                            : cell.value.toLongLong());
        if (field.decimals > 0 && written.ec == std::errc() && end - written.ptr > field.decimals) {
            *written.ptr++ = '.';
            written.ptr = std::fill_n(written.ptr, field.decimals, '0');
        }
        break;
    default: {
        bool ok = cell.type == QMetaType::Double;
        const double number = ok ? cell.as<double>() : cell.value.toDouble(&ok);
        if (!ok || !std::isfinite(number))
            throw conversionError(field, cell.value, QStringLiteral("it is not a number"));
        written = std::to_chars(buffer, end, halvesAwayFromZero(number, field.decimals),
                                std::chars_format::fixed, field.decimals);
        break;
    }
    }
    if (written.ec != std::errc())
        throw numericOverflow(field, "(too long)");
    return {buffer, std::size_t(written.ptr - buffer)};
}

void writeNumber(char* out, const FieldDescriptor& field, const Cell& cell) {
    char buffer[400]; // the widest fixed-point double fits
    const std::string_view text = formatNumber(buffer, sizeof buffer, field, cell);
    if (qsizetype(text.size()) > field.length)
        throw numericOverflow(field, text);
    std::memcpy(out + field.length - text.size(), text.data(), text.size());
}

QDate dateOf(const FieldDescriptor& field, const Cell& cell) {
    switch (cell.type) {
    case QMetaType::QDate:
        return cell.as<QDate>();
    case QMetaType::QDateTime:
        return cell.as<QDateTime>().date();
    default:
        break;
    }
    const QString text = cell.value.toString().trimmed();
    QDate date = QDate::fromString(text.left(10), Qt::ISODate);
    if (!date.isValid())
        date = QDate::fromString(text, QStringLiteral("yyyyMMdd"));
    if (!date.isValid())
        throw conversionError(field, cell.value, QStringLiteral("it is not a date"));
    return date;
}

// The first and last day a date field can hold: 0001-01-01 and 9999-12-31.
constexpr qint64 firstJulianDay = 1721426;
constexpr qint64 lastJulianDay = 5373484;

// The proleptic Gregorian date of a Julian day in the fields' range, worked out directly in
// unsigned arithmetic: the calendar classes are far slower, and this runs for every date of
// every record.
struct CivilDate {
    unsigned year;
    unsigned month;
    unsigned day;
};

CivilDate civilFromJulianDay(qint64 julianDay) {
    const auto days = unsigned(julianDay - 1721120); // days since 0000-03-01
    const unsigned era = days / 146097;
    const unsigned dayOfEra = days - era * 146097;
    const unsigned yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned shiftedMonth = (5 * dayOfYear + 2) / 153; // March = 0
    const unsigned day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
    const unsigned month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

void writeTwoDigits(char* out, unsigned value) {
    static constexpr char pairs[] = "00010203040506070809101112131415161718192021222324"
                                    "25262728293031323334353637383940414243444546474849"
                                    "50515253545556575859606162636465666768697071727374"
                                    "75767778798081828384858687888990919293949596979899";
    std::memcpy(out, pairs + 2 * value, 2);
}

void writeDate(char* out, const FieldDescriptor& field, const Cell& cell) {
    const QDate given = dateOf(field, cell);
    if (!given.isValid())
        throw conversionError(field, cell.value, QStringLiteral("it is not a date"));
    const qint64 julianDay = given.toJulianDay();
    if (julianDay < firstJulianDay || julianDay > lastJulianDay)
        throw conversionError(field, cell.value, QStringLiteral("the year is out of range"));
    const CivilDate date = civilFromJulianDay(julianDay);
    writeTwoDigits(out, date.year / 100);
    writeTwoDigits(out + 2, date.year % 100);
    writeTwoDigits(out + 4, date.month);
    writeTwoDigits(out + 6, date.day);
}

void writeLogical(char* out, const FieldDescriptor& field, const Cell& cell) {
    bool truth = false;
    if (cell.type == QMetaType::Bool) {
        truth = cell.as<bool>();
    } else if (cell.type == QMetaType::QString) {
        const QString text = cell.as<QString>().trimmed().toLower();
        if (text == u"t" || text == u"true" || text == u"y" || text == u"yes" || text == u"-1" ||
            text == u"1")
            truth = true;
        else if (!(text == u"f" || text == u"false" || text == u"n" || text == u"no" ||
                   text == u"0"))
            throw conversionError(field, cell.value, QStringLiteral("it is not a logical value"));
    } else {
        truth = cell.value.toBool();
    }
    *out = truth ? 'T' : 'F';
}

bool isBlankText(const Cell& cell) {
    return cell.type == QMetaType::QString && cell.as<QString>().trimmed().isEmpty();
}

} // namespace

void writeFieldValue(char* out, const FieldDescriptor& field, const QVariant& value) {
    const Cell cell{value, value.typeId()};
    if (cell.type == QMetaType::UnknownType || cell.type == QMetaType::Nullptr)
        return;
    // Values of the types a record set holds are never null otherwise; anything else may be.
    const bool common = cell.type == QMetaType::QString || cell.type == QMetaType::Int ||
                        cell.type == QMetaType::LongLong || cell.type == QMetaType::Double ||
                        cell.type == QMetaType::QDateTime || cell.type == QMetaType::Bool;
    if (!common && value.isNull())
        return;
    switch (field.type) {
    case 'C':
        writeText(out, field, cell);
        return;
    case 'N':
        if (!isBlankText(cell))
            writeNumber(out, field, cell);
        return;
    case 'D':
        if (!isBlankText(cell))
            writeDate(out, field, cell);
        return;
    case 'L':
        writeLogical(out, field, cell);
        return;
    default:
        throw Error(ErrorNumber::NotSupported,
                    QStringLiteral("Field %1 has type '%2', which cannot be written.")
                        .arg(field.name, QChar::fromLatin1(field.type)));
    }
}

QVariant readFieldValue(const char* record, const FieldDescriptor& field) {
    const char* at = record + field.offset;
    const QByteArray raw = QByteArray(at, field.length);
    switch (field.type) {
    case 'C': {
        qsizetype size = field.length;
        while (size > 0 && (at[size - 1] == ' ' || at[size - 1] == '\0'))
            --size;
        return fromCp1252(at, size);
    }
    case 'N': {
        bool ok = false;
        const double number = raw.trimmed().toDouble(&ok);
        return ok ? QVariant(number) : QVariant();
    }
    case 'D': {
        const QDate date = QDate::fromString(QString::fromLatin1(raw), QStringLiteral("yyyyMMdd"));
        return date.isValid() ? QVariant(QDateTime(date, QTime(0, 0))) : QVariant();
    }
    case 'L':
        if (*at == 'T' || *at == 't' || *at == 'Y' || *at == 'y')
            return true;
        if (*at == 'F' || *at == 'f' || *at == 'N' || *at == 'n')
            return false;
        return {};
    case 'M':
        return readMemoBlock(at);
    default:
        return {};
    }
}

void writeMemoBlock(char* out, quint32 block) {
    qToLittleEndian(block, out);
}

quint32 readMemoBlock(const char* field) {
    return qFromLittleEndian<quint32>(field);
}

} // namespace vx::dbf
