#pragma once

#include <QString>

class QFile;

namespace vx::dbf {

// Writes all of `bytes` at `position`. A short write is carried on until the system refuses,
// so the failure names its cause ("No space left on device", "Permission denied"). Returns an
// empty text on success, otherwise that cause.
QString writeFully(QFile& file, qint64 position, const char* bytes, qint64 size);

// Throws vx::Error "Cannot write the <what> '<file>': <cause>" when writeFully fails.
void writeOrThrow(QFile& file, qint64 position, const char* bytes, qint64 size,
                  const QString& what);

} // namespace vx::dbf
