#include "session/UiServices.h"

#include "session/QtUiServices.h"

#include <utility>

namespace vx {
namespace {

struct ThreadServices {
    std::unique_ptr<UiServices> installed;
    std::unique_ptr<UiServices> standard;
};

ThreadServices& threadServices() {
    thread_local ThreadServices services;
    return services;
}

} // namespace

UiServices& ui() {
    ThreadServices& services = threadServices();
    if (services.installed)
        return *services.installed;
    if (!services.standard)
        services.standard = std::make_unique<QtUiServices>();
    return *services.standard;
}

std::unique_ptr<UiServices> installUiServices(std::unique_ptr<UiServices> services) {
    return std::exchange(threadServices().installed, std::move(services));
}

} // namespace vx
