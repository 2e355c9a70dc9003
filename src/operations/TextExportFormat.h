#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

namespace vx {

// The comma-separated text file of the hit list's Print command: a header of field names, then
// one line per document with every value between double quotes, lines ending CR LF.
namespace textexport {

inline constexpr char LineEnd[] = "\r\n";

// The header line (without its line end): the field names joined by ",".
QString headerLine(const QStringList& fieldNames);

// A value as it appears between the quotes. Null and empty values give nothing; text loses every
// carriage return, line feed and double quote (so a line stays one line and quoting stays
// unambiguous); Yes/No values read "True" or "False", as a Boolean's own text form does, rather
// than the stored -1 and 0; dates give the user's short date, followed by the time as hh:nn:ss
// when it is not midnight; numbers their plain text form.
QString valueText(const QVariant& value);

// One document's line (without its line end): each value quoted, joined by ",".
QString valueLine(const QList<QVariant>& values);

} // namespace textexport
} // namespace vx
