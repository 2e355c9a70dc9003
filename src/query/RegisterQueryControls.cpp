#include "query/VXFavourites.h"
#include "query/VXQuery.h"
#include "server/ControlFactory.h"

namespace vx {

void registerQueryControls() {
    ControlFactory::registerControl<VXQuery>(QStringLiteral("VXUILib.VXQuery"));
    ControlFactory::registerControl<VXFavourites>(QStringLiteral("VXUILib.VXFavourites"));
}

} // namespace vx
