#pragma once

#include "session/UiServices.h"

#include <QStringList>

namespace vx::demo {

// Answers the controls' questions during the unattended tour: message boxes take their first
// button (Yes, OK, Abort, Retry), input boxes the queued answer or their default, and files are
// noted rather than opened. Every prompt is printed so the tour's output shows what was asked.
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
    // Everything asked and opened so far, one line each.
    QStringList log() const { return m_log; }

private:
    void note(const QString& line);

    QStringList m_inputs;
    QStringList m_log;
};

} // namespace vx::demo
