// Assignment conversions of record set fields, after the platform's variant coercion rules.
#include "data/DataType.h"
#include "data/Field.h"
#include "data/recordset/DateText.h"
#include "data/recordset/RecordsetErrors.h"

#include <QLocale>
#include <cmath>
#include <limits>

namespace vx {
namespace {

enum class Input { Null, Boolean, Number, Text, Date, Other };

Input classify(const QVariant& value) {
    if (!value.isValid() || value.isNull())
        return Input::Null;
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        return Input::Boolean;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Double:
    case QMetaType::Float:
        return Input::Number;
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QChar:
        return Input::Text;
    case QMetaType::QDate:
    case QMetaType::QDateTime:
    case QMetaType::QTime:
        return Input::Date;
    default:
        return Input::Other;
    }
}

double roundHalfEven(double value) {
    double rounded = std::round(value);
    if (std::fabs(rounded - value) == 0.5)
        rounded = 2.0 * std::round(value / 2.0);
    return rounded;
}

// Numbers typed by people use the user's locale; stored and generated ones the C locale.
bool parseReal(const QString& text, double& result) {
    bool ok = false;
    result = QLocale().toDouble(text, &ok);
    if (!ok)
        result = QLocale::c().toDouble(text, &ok);
    return ok;
}

bool parseWhole(const QString& text, qint64& result) {
    bool ok = false;
    result = QLocale().toLongLong(text, &ok);
    if (!ok)
        result = QLocale::c().toLongLong(text, &ok);
    return ok;
}

// A date outside the platform's calendar overflows; an empty one is no date at all.
QDateTime inCalendar(const QDate& date, const QTime& time) {
    if (!date.isValid())
        throw errors::typeMismatch();
    if (!datetext::inCalendarRange(date))
        throw errors::overflow();
    return datetext::wallClock(date, time);
}

QDateTime dateOf(const QVariant& value) {
    switch (value.metaType().id()) {
    case QMetaType::QDate:
        return inCalendar(value.toDate(), QTime(0, 0));
    case QMetaType::QTime:
        if (!value.toTime().isValid())
            throw errors::typeMismatch();
        // A time alone is a time on the platform's day zero.
        return datetext::wallClock(QDate(1899, 12, 30), value.toTime());
    default: {
        const QDateTime dateTime = value.toDateTime();
        return inCalendar(dateTime.date(), dateTime.time());
    }
    }
}

struct Range {
    qint64 low;
    qint64 high;
};

Range rangeOf(DataType type) {
    switch (type) {
    case DataType::SmallInt:
        return {std::numeric_limits<qint16>::min(), std::numeric_limits<qint16>::max()};
    case DataType::TinyInt:
        return {-128, 127};
    case DataType::UnsignedTinyInt:
        return {0, 255};
    case DataType::Integer:
        return {std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()};
    default:
        return {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()};
    }
}

qint64 wholeFromReal(double value, Range range) {
    if (!std::isfinite(value))
        throw errors::overflow();
    const double rounded = roundHalfEven(value);
    // 2^63 is exactly representable; anything at or above it does not fit a 64-bit integer.
    if (rounded < -9223372036854775808.0 || rounded >= 9223372036854775808.0)
        throw errors::overflow();
    const auto whole = qint64(rounded);
    if (whole < range.low || whole > range.high)
        throw errors::overflow();
    return whole;
}

QVariant toInteger(const QVariant& value, Input input, const ColumnInfo& column) {
    const Range range = rangeOf(column.type);
    qint64 whole = 0;
    switch (input) {
    case Input::Boolean:
        whole = value.toBool() ? -1 : 0;
        break;
    case Input::Number:
        if (value.metaType().id() == QMetaType::Double || value.metaType().id() == QMetaType::Float)
            whole = wholeFromReal(value.toDouble(), range);
        else if (value.metaType().id() == QMetaType::ULongLong &&
                 value.toULongLong() > quint64(std::numeric_limits<qint64>::max()))
            throw errors::overflow();
        else
            whole = value.toLongLong();
        break;
    case Input::Text: {
        const QString text = value.toString().trimmed();
        double real = 0;
        if (!parseWhole(text, whole)) {
            if (!parseReal(text, real))
                throw errors::typeMismatch();
            whole = wholeFromReal(real, range);
        }
        break;
    }
    case Input::Date:
        whole = wholeFromReal(datetext::toSerial(dateOf(value)), range);
        break;
    default:
        throw errors::typeMismatch();
    }
    if (whole < range.low || whole > range.high)
        throw errors::overflow();
    if (column.type == DataType::BigInt)
        return QVariant(whole);
    return QVariant(int(whole));
}

QVariant toReal(const QVariant& value, Input input, const ColumnInfo& column) {
    double real = 0;
    switch (input) {
    case Input::Boolean:
        real = value.toBool() ? -1.0 : 0.0;
        break;
    case Input::Number:
        real = value.toDouble();
        break;
    case Input::Text:
        if (!parseReal(value.toString().trimmed(), real))
            throw errors::typeMismatch();
        break;
    case Input::Date:
        real = datetext::toSerial(dateOf(value));
        break;
    default:
        throw errors::typeMismatch();
    }
    if (column.type == DataType::Single) {
        if (std::isfinite(real) && std::fabs(real) > double(std::numeric_limits<float>::max()))
            throw errors::overflow();
        real = double(float(real));
    }
    return QVariant(real);
}

QVariant toBoolean(const QVariant& value, Input input) {
    switch (input) {
    case Input::Boolean:
        return QVariant(value.toBool());
    case Input::Number:
        return QVariant(value.toDouble() != 0.0);
    case Input::Text: {
        const QString text = value.toString().trimmed();
        if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
            return QVariant(true);
        if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
            return QVariant(false);
        double real = 0;
        if (!parseReal(text, real))
            throw errors::typeMismatch();
        return QVariant(real != 0.0);
    }
    default:
        throw errors::typeMismatch();
    }
}

QVariant toDate(const QVariant& value, Input input) {
    switch (input) {
    case Input::Date:
        return QVariant(dateOf(value));
    case Input::Number:
        return QVariant(datetext::fromSerial(value.toDouble()));
    case Input::Text: {
        const QDateTime parsed = datetext::parse(value.toString());
        if (!parsed.isValid())
            throw errors::typeMismatch();
        return QVariant(inCalendar(parsed.date(), parsed.time()));
    }
    default:
        throw errors::typeMismatch();
    }
}

QString textOf(const QVariant& value, Input input) {
    switch (input) {
    case Input::Boolean:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case Input::Number:
        if (value.metaType().id() == QMetaType::Double || value.metaType().id() == QMetaType::Float)
            return QString::number(value.toDouble(), 'g', 15);
        return value.toString();
    case Input::Date:
        return datetext::formatGeneralDate(dateOf(value));
    case Input::Text:
        if (value.metaType().id() == QMetaType::QByteArray)
            return QString::fromUtf8(value.toByteArray());
        return value.toString();
    default:
        if (value.canConvert<QString>())
            return value.toString();
        throw errors::typeMismatch();
    }
}

bool hasSizeLimit(DataType type) {
    return type == DataType::VarChar || type == DataType::VarWChar || type == DataType::Char ||
           type == DataType::WChar;
}

} // namespace

QVariant convertForColumn(const QVariant& value, const ColumnInfo& column) {
    const Input input = classify(value);
    if (input == Input::Null)
        return {};
    const StorageKind kind = storageKindOf(column.type);
    // A blank entry in a number, date or Yes/No column means "no value", not an error.
    if (input == Input::Text && kind != StorageKind::Text && value.toString().trimmed().isEmpty())
        return {};

    if (column.type == DataType::Boolean)
        return toBoolean(value, input);
    switch (kind) {
    case StorageKind::Integer:
        return toInteger(value, input, column);
    case StorageKind::Real:
        return toReal(value, input, column);
    case StorageKind::DateTime:
        return toDate(value, input);
    case StorageKind::Text:
        break;
    }
    const QString text = textOf(value, input);
    if (hasSizeLimit(column.type) && column.definedSize > 0 && text.size() > column.definedSize)
        throw errors::valueDoesNotFit();
    return QVariant(text);
}

} // namespace vx
