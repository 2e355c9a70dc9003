#pragma once

#include "session/UiServices.h"

#include <QStringList>
#include <functional>

namespace vx::demo {

// Answers the controls' questions during the unattended tour: message boxes take their first
// button (Yes, OK, Abort, Retry), input boxes the queued answer or their default, and files are
// noted rather than opened; folder browsers take the queued folder, else they are cancelled. Every
// prompt is printed so the tour's output shows what was asked.
class TourUiServices : public UiServices {
public:
    MessageAnswer messageBox(const QString& text, int style, const QString& title) override;
    std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText) override;
    QString browseForFolder(QWidget* owner, const QString& title) override;
    void setBusyCursor(bool busy) override;
    void processEvents() override;
    void sleep(int milliseconds) override;
    bool shellExecute(const QString& verb, const QString& file) override;

    // The answer of the next input box.
    void queueInput(const QString& answer) { m_inputs << answer; }
    // The answer of the next folder browser (none queued: cancelled).
    void queueFolder(const QString& folder) { m_folders << folder; }
    // Run on each yield to the event loop: acts as the user of a modeless dialog.
    void onProcessEvents(std::function<void()> hook) { m_processEventsHook = std::move(hook); }
    // Everything asked and opened so far, one line each.
    QStringList log() const { return m_log; }

private:
    void note(const QString& line);

    QStringList m_inputs;
    QStringList m_folders;
    std::function<void()> m_processEventsHook;
    QStringList m_log;
};

} // namespace vx::demo
