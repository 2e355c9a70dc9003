#pragma once

#include <QDateTime>
#include <QString>
#include <QVariant>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// The value conversions the controls rely on, with the platform's rules. Failures throw
// vx::Error: ErrorNumber::TypeMismatch ("Type mismatch") or ErrorNumber::Overflow ("Overflow").

// "true"/"false" in any case, or a number (non-zero is true).
VXUILIB_EXPORT bool textToBoolean(const QString& text);
// Rounds halves to even (2.5 -> 2, 3.5 -> 4, -2.5 -> -2); text is read as a number first.
VXUILIB_EXPORT qint32 toInt32(const QVariant& value);
qint16 toInt16(const QVariant& value);
VXUILIB_EXPORT double toDouble(const QVariant& value);
// By the user's short date format, then ISO and a few common forms.
VXUILIB_EXPORT QDateTime textToDate(const QString& text);

// A blank before non-negative numbers: " 42", "-7", " 2.5".
QString numberToText(qint64 number);
QString numberToText(double number);

// Patterns the controls use: "mm/dd/yyyy", "dd/mm/yyyy", "ddmmyy", "hhmmss", "yyyy-mm-dd hh:nn:ss"
// and "Short Date". "m" after "h" means minutes, elsewhere month; "n" is always minutes.
QString formatDateTime(const QDateTime& value, const QString& pattern);
// Digit patterns: "0000" (zero-padded), "#########.##" (at most two decimals, none when whole).
QString formatNumber(double value, const QString& pattern);

} // namespace vx
