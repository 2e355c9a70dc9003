#include "hitlist/VXHitList.h"
#include "server/ControlFactory.h"

namespace vx {

// Registers VXUILib.VXHitList.
void registerHitListControls() {
    ControlFactory::registerControl<VXHitList>(QStringLiteral("VXUILib.VXHitList"));
}

} // namespace vx
