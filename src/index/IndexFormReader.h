#pragma once

#include "session/Schema.h"

#include <QString>
#include <QStringList>
#include <QVariant>

class QObject;

namespace vx {

class VXDynaForm;

// Reading the index form and the keyword picker the way both commit paths need it.
namespace indexform {

// Longest text a text field hands over or stores.
inline constexpr int MaxTextLength = 64000;

// The field's type by its column, from the form definition.
FieldType fieldType(const QString& column);

// Unset, null or an empty text: the commit treats all three as "nothing entered".
bool isEmptyValue(const QVariant& value);

// Cut to 64000 characters, then blanks removed at both ends (only blanks, as the form stores).
QString cutAndTrimmed(const QVariant& value);

// The entries of the form's current list field joined by ";" in order; `count` tells how many.
QString joinedListEntries(VXDynaForm& form, int& count);

// A value as it reads in a status text (Booleans as True/False).
QString valueText(const QVariant& value);

// The keyword picker's picked words, walked through its cursor members.
QStringList pickedKeywords(QObject* picker);

} // namespace indexform
} // namespace vx
