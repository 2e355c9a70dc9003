#include "pickers/VXDictionary.h"
#include "pickers/VXDocSec.h"
#include "pickers/VXKeywords.h"
#include "server/ControlFactory.h"

namespace vx {

void registerPickerControls() {
    ControlFactory::registerControl<VXKeywords>(QStringLiteral("VXUILib.VXKeywords"));
    ControlFactory::registerControl<VXDocSec>(QStringLiteral("VXUILib.VXDocSec"));
    ControlFactory::registerControl<VXDictionary>(QStringLiteral("VXUILib.VXDictionary"));
}

} // namespace vx
