#pragma once

#include <QByteArray>
#include <QString>

namespace vx::dbf {

// The tables are written with the Windows ANSI code page (header mark 0x03): one byte per
// character, '?' for a character the page lacks.
QByteArray toCp1252(QStringView text);
// Encodes at most `capacity` characters into `out`; returns how many bytes it wrote.
qsizetype toCp1252(QStringView text, char* out, qsizetype capacity);
QString fromCp1252(const char* bytes, qsizetype size);

} // namespace vx::dbf
