#pragma once

#include "session/UiServices.h"

#include <QStringList>
#include <cstdio>
#include <functional>

namespace vx::viewer {

// Answers the controls when nobody sits at the screen (--print-hits, --tour): message boxes take
// their first button, folder questions the queued folder (none: cancelled), files are noted
// rather than opened. Every prompt is written to the given stream (none: kept silently).
class UnattendedUi : public UiServices {
public:
    explicit UnattendedUi(std::FILE* stream = nullptr)
        : m_stream(stream) {}

    MessageAnswer messageBox(const QString& text, int style, const QString& title) override;
    std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText) override;
    QString browseForFolder(QWidget* owner, const QString& title) override;
    void setBusyCursor(bool busy) override;
    void processEvents() override;
    void sleep(int milliseconds) override;
    bool shellExecute(const QString& verb, const QString& file) override;

    void queueFolder(const QString& folder) { m_folders << folder; }
    // Runs on every processEvents(), after the events: lets the tour work a modeless dialog.
    void onProcessEvents(std::function<void()> hook) { m_hook = std::move(hook); }
    QStringList log() const { return m_log; }
    QStringList opened() const { return m_opened; }

private:
    void note(const QString& line);

    std::FILE* m_stream;
    QStringList m_folders;
    QStringList m_log;
    QStringList m_opened;
    std::function<void()> m_hook;
};

} // namespace vx::viewer
