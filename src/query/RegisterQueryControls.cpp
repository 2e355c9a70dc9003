#include "server/ControlFactory.h"

namespace vx {

// Registers VXUILib.VXQuery and VXUILib.VXFavourites.
void registerQueryControls() {}

} // namespace vx
