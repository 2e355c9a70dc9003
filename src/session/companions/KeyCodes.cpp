#include "session/companions/KeyCodes.h"

#include <QKeyEvent>

namespace vx {

namespace {

qint16 codeOf(int key) {
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return qint16('A' + (key - Qt::Key_A));
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return qint16('0' + (key - Qt::Key_0));
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return qint16(112 + (key - Qt::Key_F1));
    switch (key) {
    case Qt::Key_Backspace:
        return KeyCode::Back;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return KeyCode::Tab;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return KeyCode::Return;
    case Qt::Key_Shift:
        return 16;
    case Qt::Key_Control:
        return 17;
    case Qt::Key_Alt:
        return 18;
    case Qt::Key_Pause:
        return 19;
    case Qt::Key_CapsLock:
        return 20;
    case Qt::Key_Escape:
        return KeyCode::Escape;
    case Qt::Key_Space:
        return KeyCode::Space;
    case Qt::Key_PageUp:
        return 33;
    case Qt::Key_PageDown:
        return 34;
    case Qt::Key_End:
        return 35;
    case Qt::Key_Home:
        return 36;
    case Qt::Key_Left:
        return 37;
    case Qt::Key_Up:
        return 38;
    case Qt::Key_Right:
        return 39;
    case Qt::Key_Down:
        return 40;
    case Qt::Key_Insert:
        return 45;
    case Qt::Key_Delete:
        return KeyCode::Delete;
    case Qt::Key_Semicolon:
    case Qt::Key_Colon:
        return 186;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return 187;
    case Qt::Key_Comma:
    case Qt::Key_Less:
        return 188;
    case Qt::Key_Minus:
    case Qt::Key_Underscore:
        return 189;
    case Qt::Key_Period:
    case Qt::Key_Greater:
        return 190;
    case Qt::Key_Slash:
    case Qt::Key_Question:
        return 191;
    default:
        return 0;
    }
}

} // namespace

qint16 platformKeyCode(const QKeyEvent& event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    // The keypad's digits have codes of their own.
    if ((modifiers & Qt::KeypadModifier) && event.key() >= Qt::Key_0 && event.key() <= Qt::Key_9)
        return qint16(96 + (event.key() - Qt::Key_0));
    return codeOf(event.key());
}

qint16 platformShiftState(const QKeyEvent& event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    qint16 state = 0;
    if (modifiers & Qt::ShiftModifier)
        state |= ShiftState::Shift;
    if (modifiers & Qt::ControlModifier)
        state |= ShiftState::Ctrl;
    if (modifiers & Qt::AltModifier)
        state |= ShiftState::Alt;
    return state;
}

} // namespace vx
