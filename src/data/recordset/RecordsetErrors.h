#pragma once

#include "data/Error.h"

#include <VXUILib/vxdata_export.h>

namespace vx::errors {

// Numbers the platform uses for record set failures that Error.h does not name.
inline constexpr qint32 BookmarkInvalid = qint32(0x80040E0E);
inline constexpr qint32 RowNotFoundForUpdate = qint32(0x80040E38);
inline constexpr qint32 NotAllowedInContext = qint32(0x800A0C93);

// The record set's errors with the platform's texts, which hosts show as they stand.
Error noCurrentRecord();
Error itemNotFound();
Error objectClosed();
Error invalidArgument();
Error notUpdatable();
Error bookmarkInvalid();
VXDATA_EXPORT Error rowNotFoundForUpdate();
Error notAllowedInContext();
Error typeMismatch();
Error overflow();
Error valueDoesNotFit();

} // namespace vx::errors
