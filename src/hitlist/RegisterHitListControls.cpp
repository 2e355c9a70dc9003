#include "server/ControlFactory.h"

namespace vx {

// Registers VXUILib.VXHitList.
void registerHitListControls() {}

} // namespace vx
