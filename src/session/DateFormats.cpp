// Dates to and from text: the date part of the conversions declared in Conversions.h.
#include "data/Error.h"
#include "session/Conversions.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <optional>

namespace vx {
namespace {

// Qt reads a two-digit year as 19xx; users mean the years 1930 to 2029.
QDate pivotTwoDigitYear(const QDate& date) {
    return date.year() < 1930 ? date.addYears(100) : date;
}

bool hasTwoDigitYearOnly(const QString& format) {
    return format.contains(QStringLiteral("yy")) && !format.contains(QStringLiteral("yyyy"));
}

QString withFourDigitYear(QString format) {
    if (hasTwoDigitYearOnly(format))
        format.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return format;
}

QStringList dateFormats(const QLocale& locale) {
    const QString shortFormat = locale.dateFormat(QLocale::ShortFormat);
    QStringList formats{withFourDigitYear(shortFormat),         shortFormat,
                        QStringLiteral("yyyy-MM-dd"),           QStringLiteral("yyyy/MM/dd"),
                        locale.dateFormat(QLocale::LongFormat), QStringLiteral("d MMM yyyy"),
                        QStringLiteral("d-MMM-yyyy"),           QStringLiteral("MMM d, yyyy"),
                        QStringLiteral("d MMMM yyyy"),          QStringLiteral("MMMM d, yyyy")};
    formats.removeDuplicates();
    return formats;
}

const QStringList& timeFormats() {
    static const QStringList formats{QStringLiteral("H:mm:ss"),    QStringLiteral("H:mm"),
                                     QStringLiteral("h:mm:ss AP"), QStringLiteral("h:mm AP"),
                                     QStringLiteral("H:mm:ss.z"),  QStringLiteral("h:mm:ss ap")};
    return formats;
}

// Formats are tried with single-letter day and month fields too, so "03/05/2024" and "3/5/2024"
// both read.
QString relaxed(QString format) {
    format.replace(QStringLiteral("dd"), QStringLiteral("d"));
    format.replace(QStringLiteral("MM"), QStringLiteral("M"));
    format.replace(QStringLiteral("HH"), QStringLiteral("H"));
    format.replace(QStringLiteral("hh"), QStringLiteral("h"));
    return format;
}

std::optional<QDate> readDate(const QLocale& locale, const QString& text, const QString& format) {
    for (const QString& candidate : {format, relaxed(format)}) {
        QDate date = locale.toDate(text, candidate);
        if (date.isValid())
            return hasTwoDigitYearOnly(candidate) ? pivotTwoDigitYear(date) : date;
    }
    return std::nullopt;
}

std::optional<QTime> readTime(const QLocale& locale, const QString& text) {
    for (const QString& format : timeFormats()) {
        QTime time = locale.toTime(text, format);
        if (!time.isValid())
            time = QTime::fromString(text, format);
        if (time.isValid())
            return time;
    }
    return std::nullopt;
}

} // namespace

QDateTime textToDate(const QString& input) {
    const QLocale locale;
    const QString text = input.simplified();
    if (text.isEmpty())
        throw Error(ErrorNumber::TypeMismatch, QStringLiteral("Type mismatch"));

    const QDateTime iso = QDateTime::fromString(text, Qt::ISODate);
    if (iso.isValid())
        return iso.timeSpec() == Qt::LocalTime ? iso : iso.toLocalTime();

    for (const QString& format : dateFormats(locale)) {
        if (const auto date = readDate(locale, text, format))
            return QDateTime(*date, QTime(0, 0));
        // Date and time: the date part is as many words as the format has.
        const qsizetype words = format.count(u' ') + 1;
        const QStringList parts = text.split(u' ');
        if (parts.size() <= words)
            continue;
        const QString datePart = parts.mid(0, words).join(u' ');
        const QString timePart = parts.mid(words).join(u' ');
        const auto date = readDate(locale, datePart, format);
        const auto time = date ? readTime(locale, timePart) : std::nullopt;
        if (date && time)
            return QDateTime(*date, *time);
    }
    // A time alone lands on the platform's day zero.
    if (const auto time = readTime(locale, text))
        return QDateTime(QDate(1899, 12, 30), *time);
    throw Error(ErrorNumber::TypeMismatch, QStringLiteral("Type mismatch"));
}

namespace {

struct Token {
    enum class Kind { Literal, Year, Month, Day, Hour, Minute, Second, AmPm };
    Kind kind;
    int width = 0; // letters in the pattern: "mm" is 2
    QString literal;
};

QList<Token> tokenize(const QString& pattern) {
    QList<Token> tokens;
    const auto run = [&](qsizetype at) {
        qsizetype end = at;
        while (end < pattern.size() && pattern[end].toLower() == pattern[at].toLower())
            ++end;
        return int(end - at);
    };
    bool afterHour = false;
    for (qsizetype i = 0; i < pattern.size();) {
        const QChar c = pattern[i].toLower();
        if (pattern.mid(i, 5).compare(u"AM/PM", Qt::CaseInsensitive) == 0) {
            tokens.append({Token::Kind::AmPm, 5, pattern.mid(i, 5)});
            i += 5;
            continue;
        }
        if (c == u'"') {
            const qsizetype close = pattern.indexOf(u'"', i + 1);
            const qsizetype end = close < 0 ? pattern.size() : close;
            tokens.append({Token::Kind::Literal, 0, pattern.mid(i + 1, end - i - 1)});
            i = end + 1;
            continue;
        }
        if (c == u'\\' && i + 1 < pattern.size()) {
            tokens.append({Token::Kind::Literal, 0, QString(pattern[i + 1])});
            i += 2;
            continue;
        }
        const int width = run(i);
        Token::Kind kind = Token::Kind::Literal;
        if (c == u'y')
            kind = Token::Kind::Year;
        else if (c == u'd')
            kind = Token::Kind::Day;
        else if (c == u'h')
            kind = Token::Kind::Hour;
        else if (c == u'n')
            kind = Token::Kind::Minute;
        else if (c == u's')
            kind = Token::Kind::Second;
        else if (c == u'm')
            kind = afterHour && width <= 2 ? Token::Kind::Minute : Token::Kind::Month;
        if (kind == Token::Kind::Literal) {
            tokens.append({kind, 0, QString(pattern[i])});
            ++i;
            continue;
        }
        afterHour = kind == Token::Kind::Hour;
        tokens.append({kind, width, {}});
        i += width;
    }
    return tokens;
}

QString twoDigits(int value) {
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

} // namespace

QString formatDateTime(const QDateTime& value, const QString& pattern) {
    if (!value.isValid())
        return {};
    const QLocale locale;
    const QDate date = value.date();
    const QTime time = value.time();
    if (pattern.compare(u"Short Date", Qt::CaseInsensitive) == 0)
        return locale.toString(date, withFourDigitYear(locale.dateFormat(QLocale::ShortFormat)));
    if (pattern.compare(u"Long Date", Qt::CaseInsensitive) == 0)
        return locale.toString(date, QLocale::LongFormat);
    if (pattern.compare(u"Short Time", Qt::CaseInsensitive) == 0)
        return time.toString(QStringLiteral("HH:mm"));
    if (pattern.compare(u"Long Time", Qt::CaseInsensitive) == 0)
        return locale.toString(time, QLocale::LongFormat);

    const QList<Token> tokens = tokenize(pattern);
    const bool twelveHour = std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
        return token.kind == Token::Kind::AmPm;
    });
    QString text;
    for (const Token& token : tokens) {
        switch (token.kind) {
        case Token::Kind::Literal:
            text += token.literal;
            break;
        case Token::Kind::Year:
            text += token.width <= 2 ? twoDigits(date.year() % 100) : QString::number(date.year());
            break;
        case Token::Kind::Month:
            if (token.width == 1)
                text += QString::number(date.month());
            else if (token.width == 2)
                text += twoDigits(date.month());
            else
                text += locale.monthName(date.month(), token.width == 3 ? QLocale::ShortFormat
                                                                        : QLocale::LongFormat);
            break;
        case Token::Kind::Day:
            if (token.width == 1)
                text += QString::number(date.day());
            else if (token.width == 2)
                text += twoDigits(date.day());
            else
                text += locale.dayName(date.dayOfWeek(), token.width == 3 ? QLocale::ShortFormat
                                                                          : QLocale::LongFormat);
            break;
        case Token::Kind::Hour: {
            int hour = time.hour();
            if (twelveHour)
                hour = hour % 12 == 0 ? 12 : hour % 12;
            text += token.width == 1 ? QString::number(hour) : twoDigits(hour);
            break;
        }
        case Token::Kind::Minute:
            text += token.width == 1 ? QString::number(time.minute()) : twoDigits(time.minute());
            break;
        case Token::Kind::Second:
            text += token.width == 1 ? QString::number(time.second()) : twoDigits(time.second());
            break;
        case Token::Kind::AmPm: {
            const bool upper = token.literal.front().isUpper();
            const QString marker = time.hour() < 12 ? QStringLiteral("AM") : QStringLiteral("PM");
            text += upper ? marker : marker.toLower();
            break;
        }
        }
    }
    return text;
}

} // namespace vx
