#include "hitlist/FindReplaceValues.h"

#include "data/Error.h"
#include "session/Conversions.h"
#include "session/UiServices.h"

#include <QDateTime>
#include <cmath>

namespace vx {

namespace {

QVariant refuse(const QString& message, bool isFindWhat) {
    ui().messageBox(message, MessageStyle::OkOnly | MessageStyle::Exclamation,
                    isFindWhat ? QStringLiteral("Find What") : QStringLiteral("Replace With"));
    return FindReplaceRefused;
}

// The day of a date, through the "mm/dd/yyyy" form, so a time of day never takes part.
QDate dayOf(const QDateTime& value) {
    return QDate::fromString(formatDateTime(value, QStringLiteral("mm/dd/yyyy")),
                             QStringLiteral("MM/dd/yyyy"));
}

QDateTime dateTimeOf(const QVariant& value) {
    switch (value.metaType().id()) {
    case QMetaType::QDateTime:
        return value.toDateTime();
    case QMetaType::QDate:
        return value.toDate().startOfDay();
    default:
        return textToDate(value.toString());
    }
}

bool isNullValue(const QVariant& value) {
    return !value.isValid() || value.isNull();
}

} // namespace

QString plainNumberText(double value) {
    if (std::trunc(value) == value && std::fabs(value) < 1e15)
        return QString::number(qint64(value));
    return QString::number(value, 'g', 15);
}

QVariant ValidateValue(const QString& text, const QString& type, bool isFindWhat) {
    if (type == QLatin1String("NumericField")) {
        try {
            return toDouble(text);
        } catch (const Error&) {
            return refuse(QStringLiteral("Invalid number entered!"), isFindWhat);
        }
    }
    if (type == QLatin1String("CheckField")) {
        const QString answer = text.trimmed().toLower();
        if (answer == QLatin1String("yes"))
            return QStringLiteral("-1");
        if (answer == QLatin1String("no"))
            return QStringLiteral("0");
        return refuse(
            QStringLiteral("Invalid value entered! Please enter in a value of either Yes or No"),
            isFindWhat);
    }
    if (type == QLatin1String("DateField")) {
        try {
            const QDate day = dayOf(textToDate(text));
            if (day.isValid())
                return QDateTime(day, QTime(0, 0));
        } catch (const Error&) {
        }
        return refuse(QStringLiteral("Invalid date entered!"), isFindWhat);
    }
    return text.toLower();
}

bool isRefusedValue(const QVariant& value) {
    return value.metaType().id() == QMetaType::QString && value.toString() == FindReplaceRefused;
}

QString FormatForCompare(const QString& type, const QVariant& value) {
    if (isNullValue(value))
        return {};
    if (type == QLatin1String("NumericField")) {
        try {
            return plainNumberText(toDouble(value));
        } catch (const Error&) {
            return value.toString();
        }
    }
    if (type == QLatin1String("CheckField")) {
        // Yes/No cells come as Booleans, the searched value as "-1"/"0".
        if (value.metaType().id() == QMetaType::Bool)
            return value.toBool() ? QStringLiteral("-1") : QStringLiteral("0");
        return value.toString();
    }
    if (type == QLatin1String("DateField")) {
        try {
            const QDate day = dayOf(dateTimeOf(value));
            return day.isValid() ? day.toString(Qt::ISODate) : QString();
        } catch (const Error&) {
            return {};
        }
    }
    if (type == QLatin1String("MemoField") || type == QLatin1String("ComboField") ||
        type == QLatin1String("ListField") || type == QLatin1String("EditField"))
        return value.toString().toLower();
    return {};
}

bool replaceAllowedFor(const QString& caption, const QString& type) {
    const QString column = caption.toLower();
    const QString kind = type.toLower();
    return column != QLatin1String("itemid") && column != QLatin1String("indexdate") &&
           column != QLatin1String("idx_date") && kind != QLatin1String("datefield") &&
           kind != QLatin1String("checkfield");
}

QString findReplaceRefusal(const QString& type) {
    if (type == QLatin1String("MemoField"))
        return QStringLiteral("Can't Find and Replace on a memofield");
    if (type == QLatin1String("ListField"))
        return QStringLiteral("Can't Find and Replace on a Listfield");
    return {};
}

} // namespace vx
