#include "operations/VolumeLabelReader.h"

#include "session/companions/NativeHelpers.h"

#include <utility>

namespace vx {
namespace {

VolumeLabelFunction& installedReader() {
    thread_local VolumeLabelFunction reader;
    return reader;
}

} // namespace

QString readVolumeLabel(const QString& path) {
    if (const VolumeLabelFunction& reader = installedReader())
        return reader(path);
    QString label;
    KTVolumeLabel(label, path);
    return label;
}

VolumeLabelOverride::VolumeLabelOverride(VolumeLabelFunction reader)
    : m_previous(std::exchange(installedReader(), std::move(reader))) {}

VolumeLabelOverride::~VolumeLabelOverride() {
    installedReader() = std::move(m_previous);
}

} // namespace vx
