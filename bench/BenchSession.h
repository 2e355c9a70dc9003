#pragma once

#include "companions/DefaultCompanions.h"
#include "session/Settings.h"
#include "session/UiServices.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>
#include <optional>

// Answers every prompt at once so that nothing waits for a person: No to a yes/no question, OK
// to the rest. Prints what was asked, so a bench run shows any message a user would have seen.
class SilentUi : public vx::UiServices {
public:
    vx::MessageAnswer messageBox(const QString& text, int style, const QString& title) override {
        std::printf("  [message] %s: %s\n", qPrintable(title), qPrintable(text));
        return vx::MessageStyle::buttonsOf(style) == vx::MessageStyle::YesNo
                   ? vx::MessageAnswer::No
                   : vx::MessageAnswer::Ok;
    }
    std::optional<QString> inputBox(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    QString browseForFolder(QWidget*, const QString&) override { return {}; }
    void setBusyCursor(bool) override {}
    void processEvents() override { QCoreApplication::processEvents(); }
    void sleep(int) override {}
    bool shellExecute(const QString&, const QString&) override { return false; }
};

// Before the application object: a bench draws its controls off screen unless told otherwise.
inline void drawOffscreenUnlessAsked() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

// Settings in the run's own folder, prompts answered at once, the default companions in place.
inline void isolateBenchRun(const QTemporaryDir& root) {
    vx::setSettingsDirectory(root.filePath(QStringLiteral("settings")));
    vx::installUiServices(std::make_unique<SilentUi>());
    vx::registerDefaultCompanions();
}
