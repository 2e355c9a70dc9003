// Numbers to text: the number part of the conversions declared in Conversions.h.
#include "session/Conversions.h"

#include <QLocale>
#include <algorithm>
#include <cmath>
#include <utility>

namespace vx {

QString numberToText(qint64 number) {
    const QString digits = QString::number(number);
    return number < 0 ? digits : u' ' + digits;
}

QString numberToText(double number) {
    if (number == 0.0)
        number = 0.0; // no "-0"
    // Fifteen significant digits, exponent beyond that, no zero before the decimal point: the
    // platform's number-to-text conversion, so text built from it compares equal.
    QString text = QString::number(number, 'G', 15);
    if (text.startsWith(QStringLiteral("0.")))
        text.remove(0, 1);
    else if (text.startsWith(QStringLiteral("-0.")))
        text.remove(1, 1);
    return number < 0 ? text : u' ' + text;
}

namespace {

// The decimal digits of |value| rounded to 15 significant digits, split at the decimal point.
// Working on decimal digits keeps 2.675 at two places "2.68", as a person would round it.
std::pair<QString, QString> decimalDigits(double value) {
    const QString scientific = QString::number(std::abs(value), 'e', 14); // d.ddddddddddddde+XX
    const qsizetype exponentAt = scientific.indexOf(u'e');
    const QString digits = scientific.left(1) + scientific.mid(2, exponentAt - 2);
    const int point = scientific.mid(exponentAt + 1).toInt() + 1;
    if (point <= 0)
        return {QString(), QString(-point, u'0') + digits};
    if (point >= digits.size())
        return {digits + QString(point - digits.size(), u'0'), QString()};
    return {digits.left(point), digits.mid(point)};
}

// Adds one to the last digit of a digit string, carrying; "99" becomes "100".
QString incremented(QString digits) {
    for (qsizetype i = digits.size() - 1; i >= 0; --i) {
        if (digits[i] != u'9') {
            digits[i] = QChar(digits[i].unicode() + 1);
            return digits;
        }
        digits[i] = u'0';
    }
    return u'1' + digits;
}

} // namespace

QString formatNumber(double value, const QString& pattern) {
    const QLocale locale;
    const qsizetype pointAt = pattern.indexOf(u'.');
    const QString integerPattern = pointAt < 0 ? pattern : pattern.left(pointAt);
    const QString fractionPattern = pointAt < 0 ? QString() : pattern.mid(pointAt + 1);
    const int minimumInteger = int(integerPattern.count(u'0'));
    const bool grouped = integerPattern.contains(u',');
    const int minimumFraction = int(fractionPattern.count(u'0'));
    const int maximumFraction = minimumFraction + int(fractionPattern.count(u'#'));

    auto [integer, fraction] = decimalDigits(value);
    if (fraction.size() > maximumFraction) {
        // Halves go away from zero, as displayed numbers are rounded.
        const bool roundUp = fraction[maximumFraction] >= u'5';
        fraction.truncate(maximumFraction);
        if (roundUp) {
            const QString both = incremented(integer + fraction);
            integer = both.left(both.size() - maximumFraction);
            fraction = both.right(maximumFraction);
        }
    }
    while (fraction.size() > minimumFraction && fraction.endsWith(u'0'))
        fraction.chop(1);
    while (fraction.size() < minimumFraction)
        fraction += u'0';
    while (integer.startsWith(u'0'))
        integer.remove(0, 1);
    while (integer.size() < minimumInteger)
        integer.prepend(u'0');
    if (grouped) {
        for (qsizetype at = integer.size() - 3; at > 0; at -= 3)
            integer.insert(at, locale.groupSeparator());
    }

    // Shown to people: "0.5" rather than ".5", and "3" rather than "3.".
    QString text = integer.isEmpty() ? QStringLiteral("0") : integer;
    if (!fraction.isEmpty())
        text += locale.decimalPoint() + fraction;
    const bool allZero =
        std::all_of(text.begin(), text.end(), [](QChar c) { return !c.isDigit() || c == u'0'; });
    if (value < 0 && !allZero)
        text.prepend(u'-');
    return text;
}

} // namespace vx
