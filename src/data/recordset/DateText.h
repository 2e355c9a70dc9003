#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace vx::datetext {

// The locale's short date format with a four-digit year, so that a shown date keeps its century.
QString shortDateFormat(const QLocale& locale = QLocale());

// Text to date and time: the stored ISO forms first, then the locale's short date (two- or
// four-digit year, optionally followed by a time). Two-digit years 00-29 are 2000-2029, the
// others 1930-1999. Returns an invalid QDateTime when nothing fits.
QDateTime parse(const QString& text, const QLocale& locale = QLocale());

QString formatShortDate(const QDateTime& value, const QLocale& locale = QLocale());
QString formatLongDate(const QDateTime& value, const QLocale& locale = QLocale());
QString formatShortTime(const QDateTime& value, const QLocale& locale = QLocale());
// The short date, followed by the time with seconds unless the time is midnight.
QString formatGeneralDate(const QDateTime& value, const QLocale& locale = QLocale());

// A date and time as the record sets hold them (wall clock, no time zone); an invalid time is
// midnight.
QDateTime wallClock(const QDate& date, const QTime& time = QTime(0, 0));

// The calendar the platform's dates cover: 1 January 100 to 31 December 9999.
bool inCalendarRange(const QDate& date);

// Dates as the platform's day numbers: days since 1899-12-30, the time as the fraction.
double toSerial(const QDateTime& value);
// Throws Overflow (number 6) for a day number outside the calendar, or not a number at all.
QDateTime fromSerial(double serial);

} // namespace vx::datetext
