#pragma once

#include "session/UiServices.h"

#include <QStringList>
#include <cstdio>
#include <functional>

namespace vx {

// Answers the controls when nobody sits at the screen (tours, scripted runs): message boxes take
// their first button (Yes, OK, Abort, Retry), input boxes the queued answer or their default,
// folder browsers the queued folder (none: cancelled), and files are noted rather than opened.
// Every prompt is written to the given stream (none: kept silently).
class UnattendedUiServices : public UiServices {
public:
    explicit UnattendedUiServices(std::FILE* stream = nullptr)
        : m_stream(stream) {}

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
    // Runs on every processEvents(), after the events: acts as the user of a modeless dialog.
    void onProcessEvents(std::function<void()> hook) { m_hook = std::move(hook); }
    // Everything asked and opened so far, one line each.
    QStringList log() const { return m_log; }
    // The files shellExecute was asked to open.
    QStringList opened() const { return m_opened; }

private:
    void note(const QString& line);

    std::FILE* m_stream;
    QStringList m_inputs;
    QStringList m_folders;
    QStringList m_log;
    QStringList m_opened;
    std::function<void()> m_hook;
};

} // namespace vx
