#pragma once

#include <QString>
#include <functional>

namespace vx {

// How the file operations learn the volume label of a chosen location: KTVolumeLabel unless a
// reader is installed for the calling thread (a host that names its volumes itself, tests).
// The label comes back as read; callers keep the first VolumeLabelSize characters.
QString readVolumeLabel(const QString& path);

using VolumeLabelFunction = std::function<QString(const QString& path)>;

// Installs a reader for its lifetime and puts back the one before.
class VolumeLabelOverride {
public:
    explicit VolumeLabelOverride(VolumeLabelFunction reader);
    ~VolumeLabelOverride();
    VolumeLabelOverride(const VolumeLabelOverride&) = delete;
    VolumeLabelOverride& operator=(const VolumeLabelOverride&) = delete;

private:
    VolumeLabelFunction m_previous;
};

} // namespace vx
