#pragma once

#include "session/UiServices.h"

#include <QCoreApplication>
#include <cstdio>
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
