#pragma once

#include <QString>
#include <QStringList>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// INI files read the way the platform's private-profile functions read them: section and key
// without regard to case, the value trimmed and stripped of one pair of surrounding quotes, lines
// starting with ';' ignored, the default for a missing file, section or key, and the result cut
// to bufferSize - 1 characters.
VXUILIB_EXPORT QString readPrivateProfileString(const QString& file, const QString& section,
                                                const QString& key, const QString& defaultValue,
                                                int bufferSize = 260);

// The keys of a section in file order (empty when the file or section is missing).
QStringList privateProfileKeys(const QString& file, const QString& section);

// Sets one value, keeping every other section and key in its place; adds the section or key at
// the end when missing. Lines end in CRLF. Throws vx::Error when the file cannot be written.
void writePrivateProfileString(const QString& file, const QString& section, const QString& key,
                               const QString& value);

} // namespace vx
