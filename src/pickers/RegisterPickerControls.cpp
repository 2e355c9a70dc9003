#include "server/ControlFactory.h"

namespace vx {

// Registers VXUILib.VXKeywords, VXUILib.VXDocSec and VXUILib.VXDictionary.
void registerPickerControls() {}

} // namespace vx
