#include "data/recordset/DateText.h"

#include "data/RowStore.h"
#include "data/recordset/RecordsetErrors.h"

#include <QStringList>
#include <cmath>

namespace vx::datetext {
namespace {

const QDate serialBase(1899, 12, 30);
const QDate firstDate(100, 1, 1);
const QDate lastDate(9999, 12, 31);
// The day numbers of the first and the day after the last date.
constexpr double firstSerial = -657434.0;
constexpr double endSerial = 2958466.0;

// Lets day and month stand with one or two digits, as people type them.
QString looseDigits(QString format) {
    format.replace(QLatin1String("dd"), QLatin1String("d"));
    format.replace(QLatin1String("MM"), QLatin1String("M"));
    return format;
}

QString withYearDigits(QString format, bool fourDigits) {
    format.replace(QLatin1String("yyyy"), QLatin1String("yy"));
    if (fourDigits)
        format.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    return format;
}

QString timeWithSeconds(const QLocale& locale) {
    QString format = locale.timeFormat(QLocale::ShortFormat);
    if (!format.contains(QLatin1Char('s')))
        format.replace(QLatin1String("mm"), QLatin1String("mm:ss"));
    return format;
}

QDateTime parseIso(const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    qint64 packed = 0;
    if (parseStoredDateTime(utf8.constData(), utf8.size(), packed))
        return unpackDateTime(packed);
    const QDateTime iso = QDateTime::fromString(text, Qt::ISODate);
    if (iso.isValid())
        return wallClock(iso.date(), iso.time());
    return {};
}

QDateTime parseWithLocale(const QString& text, const QLocale& locale) {
    const QString dateFormat = looseDigits(locale.dateFormat(QLocale::ShortFormat));
    const QStringList timeFormats = {QStringLiteral("H:mm:ss"), QStringLiteral("H:mm"),
                                     locale.timeFormat(QLocale::ShortFormat),
                                     timeWithSeconds(locale)};
    for (bool fourDigits : {true, false}) {
        const QString format = withYearDigits(dateFormat, fourDigits);
        QDate date = locale.toDate(text, format);
        QTime time(0, 0);
        if (!date.isValid()) {
            for (const QString& timeFormat : timeFormats) {
                const QDateTime both =
                    locale.toDateTime(text, format + QLatin1Char(' ') + timeFormat);
                if (both.isValid()) {
                    date = both.date();
                    time = both.time();
                    break;
                }
            }
        }
        if (!date.isValid())
            continue;
        // Qt reads two-digit years as 19xx; the platform keeps 00-29 in this century.
        if (!fourDigits && date.year() < 1930)
            date = date.addYears(100);
        return wallClock(date, time);
    }
    return {};
}

} // namespace

QDateTime wallClock(const QDate& date, const QTime& time) {
    // Through the packed form so every date carries the same convention as stored ones.
    return unpackDateTime(packDateTime(date, time.isValid() ? time : QTime(0, 0)));
}

QString shortDateFormat(const QLocale& locale) {
    return withYearDigits(locale.dateFormat(QLocale::ShortFormat), true);
}

QDateTime parse(const QString& text, const QLocale& locale) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {};
    const QDateTime iso = parseIso(trimmed);
    if (iso.isValid())
        return iso;
    return parseWithLocale(trimmed, locale);
}

QString formatShortDate(const QDateTime& value, const QLocale& locale) {
    return locale.toString(value.date(), shortDateFormat(locale));
}

QString formatLongDate(const QDateTime& value, const QLocale& locale) {
    return locale.toString(value.date(), QLocale::LongFormat);
}

QString formatShortTime(const QDateTime& value, const QLocale& locale) {
    return locale.toString(value.time(), QLocale::ShortFormat);
}

QString formatGeneralDate(const QDateTime& value, const QLocale& locale) {
    const QString date = formatShortDate(value, locale);
    if (value.time() == QTime(0, 0))
        return date;
    return date + QLatin1Char(' ') + locale.toString(value.time(), timeWithSeconds(locale));
}

bool inCalendarRange(const QDate& date) {
    return date.isValid() && date >= firstDate && date <= lastDate;
}

double toSerial(const QDateTime& value) {
    const double days = double(serialBase.daysTo(value.date()));
    return days + value.time().msecsSinceStartOfDay() / 86400000.0;
}

QDateTime fromSerial(double serial) {
    // Checked before any arithmetic: far-off numbers do not fit the integers below.
    if (!(serial >= firstSerial && serial < endSerial))
        throw errors::overflow();
    const double days = std::floor(serial);
    const qint64 msecs = qint64(std::llround((serial - days) * 86400000.0));
    const QDate date = serialBase.addDays(qint64(days));
    return wallClock(date, QTime::fromMSecsSinceStartOfDay(int(std::min<qint64>(msecs, 86399999))));
}

} // namespace vx::datetext
