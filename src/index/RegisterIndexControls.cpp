#include "server/ControlFactory.h"

namespace vx {

// Registers VXUILib.VXIndex.
void registerIndexControls() {}

} // namespace vx
