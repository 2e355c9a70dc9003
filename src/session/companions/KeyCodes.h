#pragma once

#include <QtGlobal>
#include <VXUILib/vxuilib_export.h>

class QKeyEvent;

namespace vx {

// Key-down events carry the platform's virtual key codes (Enter 13, Escape 27, Delete 46, 'A'
// 65 ...) and a shift state of bits 1 Shift, 2 Ctrl, 4 Alt, as hosts of the controls expect.
VXUILIB_EXPORT qint16 platformKeyCode(const QKeyEvent& event);
VXUILIB_EXPORT qint16 platformShiftState(const QKeyEvent& event);

namespace KeyCode {
inline constexpr qint16 Back = 8;
inline constexpr qint16 Tab = 9;
inline constexpr qint16 Return = 13;
inline constexpr qint16 Escape = 27;
inline constexpr qint16 Space = 32;
inline constexpr qint16 Delete = 46;
} // namespace KeyCode

namespace ShiftState {
inline constexpr qint16 Shift = 1;
inline constexpr qint16 Ctrl = 2;
inline constexpr qint16 Alt = 4;
} // namespace ShiftState

} // namespace vx
