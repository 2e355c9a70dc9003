#include "AppStartup.h"

#include "session/Settings.h"
#include "session/UnattendedUiServices.h"

#include <QGuiApplication>
#include <cstring>
#include <memory>

namespace vx::apps {

void choosePlatform(int argc, char** argv, std::initializer_list<const char*> headlessOptions) {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return;
    bool headless =
        qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    for (int i = 1; i < argc && !headless; ++i) {
        for (const char* option : headlessOptions) {
            const std::size_t length = std::strlen(option);
            // "--tour DIR" and "--tour=DIR" alike.
            if (std::strncmp(argv[i], option, length) == 0 &&
                (argv[i][length] == '\0' || argv[i][length] == '='))
                headless = true;
        }
    }
    if (headless)
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

bool displayAvailable() {
    const QString platform = QGuiApplication::platformName();
    return platform != u"offscreen" && platform != u"minimal";
}

UnattendedWorkspace::UnattendedWorkspace() {
    if (!m_work.isValid())
        return;
    qputenv("VXUILIB_SYSTEM_DIR", filePath(QStringLiteral("system")).toLocal8Bit());
    setSettingsDirectory(filePath(QStringLiteral("settings")));
    auto ui = std::make_unique<UnattendedUiServices>(stdout);
    m_ui = ui.get();
    installUiServices(std::move(ui));
}

} // namespace vx::apps
