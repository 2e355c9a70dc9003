#include "companions/DefaultCompanions.h"

#include "companions/DynaForm.h"
#include "companions/ItemList.h"
#include "companions/ScanIndex.h"
#include "companions/SecurityManager.h"
#include "companions/SqlQueryParser.h"
#include "session/companions/CompanionRegistry.h"

namespace vx {

namespace {

template <class T>
CompanionFactory factoryOf() {
    return [] { return std::unique_ptr<QObject>(std::make_unique<T>()); };
}

} // namespace

void registerDefaultCompanions() {
    registerCompanion(CompanionClass::DynaForm, factoryOf<DynaForm>());
    registerCompanion(CompanionClass::ScanIndex, factoryOf<ScanIndex>());
    registerCompanion(CompanionClass::ItemList, factoryOf<ItemList>());
    registerCompanion(CompanionClass::Security, factoryOf<SecurityManager>());
    registerCompanion(CompanionClass::SqlQuery, factoryOf<SqlQueryParser>());
}

} // namespace vx
