#pragma once

#include <QByteArray>
#include <QString>

namespace vx::dbf {

// The tables are written with the Windows ANSI code page (header mark 0x03): one byte per
// character, '?' for a character the page lacks.
QByteArray toCp1252(QStringView text);
QString fromCp1252(const char* bytes, qsizetype size);

} // namespace vx::dbf
