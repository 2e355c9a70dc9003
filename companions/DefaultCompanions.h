#pragma once

#include <VXUILib/vxcompanions_export.h>

namespace vx {

/// Registers the default implementations of the companion components under their class names
/// ("VXDynaForm.VXDynaForm", "VXIntegrate.VXScanIndex", "VXIntegrate.VXItemList",
/// "VXAdmin.VXSecurity", "VXQueryParser.VXSQLQuery"), replacing what was registered before.
/// Hosts call it once at start-up and may then register their own over some of them.
VXCOMPANIONS_EXPORT void registerDefaultCompanions();

} // namespace vx
