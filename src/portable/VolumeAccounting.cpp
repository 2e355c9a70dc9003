#include "portable/VolumeAccounting.h"

#include "data/Error.h"
#include "session/Conversions.h"

#include <limits>

namespace vx {

namespace {

constexpr double bytesPerMB = 1048576.0;

} // namespace

VolumeAccounting::VolumeAccounting(bool toCD, qint32 mediaSizeMB, QString base,
                                   QString firstVolumeName)
    : m_toCD(toCD)
    , m_mediaSizeMB(mediaSizeMB)
    , m_base(std::move(base))
    , m_volumeName(toCD ? cdVolumeName(m_base, 0) : std::move(firstVolumeName)) {}

QString VolumeAccounting::cdVolumeName(const QString& base, qint16 counter) {
    return base + formatNumber(counter, QStringLiteral("0000"));
}

VolumeAccounting::Placement VolumeAccounting::placementOf(qint64 fileSize, bool fileFound) const {
    const double megabytes = double(fileSize) / bytesPerMB;
    if (fileFound && megabytes < m_mediaSizeMB)
        return Placement::Place;
    return megabytes > m_mediaSizeMB ? Placement::TooLarge : Placement::Skip;
}

bool VolumeAccounting::addFile(qint64 fileSize) {
    if (!m_toCD)
        return false;
    m_runningTotal += fileSize;
    if (double(m_runningTotal) / bytesPerMB <= m_mediaSizeMB)
        return false;
    // The volume counter is a 16-bit number.
    if (m_counter == std::numeric_limits<qint16>::max())
        throw Error(ErrorNumber::Overflow, QStringLiteral("Overflow"));
    ++m_counter;
    m_runningTotal = 0;
    m_volumeName = cdVolumeName(m_base, m_counter);
    return true;
}

} // namespace vx
