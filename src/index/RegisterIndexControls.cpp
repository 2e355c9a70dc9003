#include "index/VXIndex.h"
#include "server/ControlFactory.h"

namespace vx {

void registerIndexControls() {
    ControlFactory::registerControl<VXIndex>(QStringLiteral("VXUILib.VXIndex"));
}

} // namespace vx
