#include "server/ControlFactory.h"

namespace vx {

// Each control folder registers its own controls.
void registerPickerControls();
void registerIndexControls();
void registerQueryControls();
void registerHitListControls();

void registerLibraryControls() {
    static const bool registered = [] {
        registerPickerControls();
        registerIndexControls();
        registerQueryControls();
        registerHitListControls();
        return true;
    }();
    Q_UNUSED(registered);
}

} // namespace vx
