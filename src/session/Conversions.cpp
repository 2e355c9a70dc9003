#include "session/Conversions.h"

#include "data/Error.h"

#include <QLocale>
#include <cmath>
#include <limits>
#include <optional>

namespace vx {
namespace {

constexpr qint32 InvalidUseOfNull = 94;

[[noreturn]] void typeMismatch() {
    throw Error(ErrorNumber::TypeMismatch, QStringLiteral("Type mismatch"));
}
[[noreturn]] void overflow() {
    throw Error(ErrorNumber::Overflow, QStringLiteral("Overflow"));
}
[[noreturn]] void invalidUseOfNull() {
    throw Error(InvalidUseOfNull, QStringLiteral("Invalid use of Null"));
}

// A number typed by a user or read from a file: the user's locale first, then the C locale, and
// the platform's "&H" / "&O" prefixes.
std::optional<double> parseNumber(const QString& input) {
    const QString text = input.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    if (text.size() > 2 && text[0] == u'&') {
        const QChar radix = text[1].toUpper();
        if (radix == u'H' || radix == u'O') {
            bool ok = false;
            const qint64 value = text.mid(2).toLongLong(&ok, radix == u'H' ? 16 : 8);
            return ok ? std::optional<double>(double(value)) : std::nullopt;
        }
    }
    bool ok = false;
    double value = QLocale().toDouble(text, &ok);
    if (!ok)
        value = QLocale::c().toDouble(text, &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

// Days since 30 December 1899, the platform's serial date.
double serialDate(const QDateTime& value) {
    static const QDateTime epoch(QDate(1899, 12, 30), QTime(0, 0));
    const QDateTime local = value.toLocalTime();
    const qint64 days = epoch.date().daysTo(local.date());
    return double(days) + local.time().msecsSinceStartOfDay() / 86400000.0;
}

double roundHalfToEven(double value) {
    const double floor = std::floor(value);
    const double fraction = value - floor;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(floor, 2.0) != 0.0))
        return floor + 1.0;
    return floor;
}

double numericValue(const QVariant& value) {
    if (!value.isValid() || value.isNull())
        invalidUseOfNull();
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        return value.toBool() ? -1.0 : 0.0;
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QChar: {
        const auto parsed = parseNumber(value.toString());
        if (!parsed)
            typeMismatch();
        return *parsed;
    }
    case QMetaType::QDate:
        return serialDate(value.toDate().startOfDay());
    case QMetaType::QDateTime:
        return serialDate(value.toDateTime());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return value.toDouble();
    default:
        typeMismatch();
    }
}

template <typename Int>
Int roundedInteger(const QVariant& value) {
    // Every 32-bit value is exact in a double, so one path serves integers and fractions.
    const double rounded = roundHalfToEven(numericValue(value));
    if (!(rounded >= double(std::numeric_limits<Int>::min()) &&
          rounded <= double(std::numeric_limits<Int>::max())))
        overflow();
    return Int(rounded);
}

} // namespace

bool textToBoolean(const QString& text) {
    const QString trimmed = text.trimmed();
    if (trimmed.compare(u"true", Qt::CaseInsensitive) == 0)
        return true;
    if (trimmed.compare(u"false", Qt::CaseInsensitive) == 0)
        return false;
    const auto number = parseNumber(trimmed);
    if (!number)
        typeMismatch();
    return *number != 0.0;
}

qint32 toInt32(const QVariant& value) {
    return roundedInteger<qint32>(value);
}

qint16 toInt16(const QVariant& value) {
    return roundedInteger<qint16>(value);
}

double toDouble(const QVariant& value) {
    return numericValue(value);
}

} // namespace vx
