#pragma once

#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// A stored value as a message may show it: characters that would break the message's lines,
// reorder its text or ring the terminal appear as escapes (\n, \t, \x1b, \u202e), and a long
// value is cut after `limit` characters with an ellipsis. Everything else stays as it is.
VXUILIB_EXPORT QString shownText(const QString& value, qsizetype limit = 120);

} // namespace vx
