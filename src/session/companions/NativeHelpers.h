#pragma once

#include <QString>
#include <QtGlobal>
#include <VXUILib/vxuilib_export.h>

class QWidget;

namespace vx {

// The native helpers the controls call as plain functions. Their buffers keep the sizes the
// callers were written for: a 260-character path buffer and an 11-character label.

/// The size of the path buffer KTBrowsePath fills, the terminating character included.
inline constexpr int PathBufferSize = 260;
/// The longest volume label KTVolumeLabel gives.
inline constexpr int VolumeLabelSize = 11;

/// Asks the user for a folder (through vx::ui()); writes the chosen folder, cut to 259
/// characters, into `buffer` and returns its length. 0 when the user cancels; the buffer is then
/// left as it was.
VXUILIB_EXPORT qint16 KTBrowsePath(QWidget* owner, QString& buffer, const QString& title);

/// Writes the name of the volume holding `path` (cut to 11 characters) into `label` and returns
/// its length; an empty label and 0 when the volume has no name or the path is on none.
VXUILIB_EXPORT qint16 KTVolumeLabel(QString& label, const QString& path);

} // namespace vx
