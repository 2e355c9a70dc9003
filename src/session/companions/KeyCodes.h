#pragma once

#include <QtGlobal>
#include <VXUILib/vxuilib_export.h>

class QKeyEvent;

namespace vx {

// Key-down events carry the platform's virtual key codes (Enter 13, Escape 27, Delete 46, 'A'
// 65 ...) and a shift state of bits 1 Shift, 2 Ctrl, 4 Alt, as hosts of the controls expect.

/// The platform's virtual key code of a Qt key event (Enter 13, Escape 27, 'A' 65 ...).
VXUILIB_EXPORT qint16 platformKeyCode(const QKeyEvent& event);
/// The shift state of a Qt key event: the sum of the ShiftState bits held down.
VXUILIB_EXPORT qint16 platformShiftState(const QKeyEvent& event);

/// Virtual key codes the controls and their hosts test by value.
namespace KeyCode {
inline constexpr qint16 Back = 8;    ///< Backspace.
inline constexpr qint16 Tab = 9;     ///< Tab.
inline constexpr qint16 Return = 13; ///< Enter.
inline constexpr qint16 Escape = 27; ///< Escape.
inline constexpr qint16 Space = 32;  ///< Space bar.
inline constexpr qint16 Delete = 46; ///< Delete.
} // namespace KeyCode

/// The bits of a key event's shift state.
namespace ShiftState {
inline constexpr qint16 Shift = 1; ///< Shift held down.
inline constexpr qint16 Ctrl = 2;  ///< Ctrl held down.
inline constexpr qint16 Alt = 4;   ///< Alt held down.
} // namespace ShiftState

} // namespace vx
