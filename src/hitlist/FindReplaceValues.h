#pragma once

#include <QString>
#include <QVariant>

namespace vx {

// What ValidateValue returns for a value the column cannot take; every caller stops on it.
inline const QString FindReplaceRefused = QStringLiteral("!@#*1ERROR1*&^%");

// The value typed into "Find What" (isFindWhat) or "Replace With" as the column's field type
// takes it: a number for "NumericField", "-1"/"0" for "CheckField" (yes/no in any case), the
// date for "DateField", any other text lower-cased. A refused value shows why (exclamation icon,
// titled after the box it came from) and gives FindReplaceRefused.
QVariant ValidateValue(const QString& text, const QString& type, bool isFindWhat);
bool isRefusedValue(const QVariant& value);

// The form in which a cell and the searched value are compared: empty for null, numbers and
// yes/no as their number text, dates by their day only, text types lower-cased, empty for any
// other type.
QString FormatForCompare(const QString& type, const QVariant& value);

// A number as SQL and comparisons want it: whole numbers without a decimal part.
QString plainNumberText(double value);

// Whether the column's values may be replaced: never the item id, the index date, date and
// yes/no columns.
bool replaceAllowedFor(const QString& caption, const QString& type);
// Memo and list columns are neither searched nor replaced; the refusal text, empty otherwise.
QString findReplaceRefusal(const QString& type);

} // namespace vx
