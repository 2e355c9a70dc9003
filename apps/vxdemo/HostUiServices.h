#pragma once

#include "session/UiServices.h"

#include <memory>

namespace vx::demo {

// Stands in front of the services the host found installed (the Qt dialogs, a test's scripted
// answers, the tour's) and remembers the user's last answers, so that the host can say where an
// operation wrote ("Exported 12 documents to ..."). After a dialog closes, the windows under it
// are redrawn at once: the control's work that follows may not return to the event loop for a
// while.
class HostUiServices : public UiServices {
public:
    HostUiServices();
    ~HostUiServices() override;

    // Puts an instance in front of the installed services for as long as the result lives.
    class Installation {
    public:
        Installation();
        ~Installation();
        Installation(const Installation&) = delete;
        Installation& operator=(const Installation&) = delete;
        HostUiServices& services() const { return *m_services; }

    private:
        HostUiServices* m_services; // owned by the thread's services while installed
    };

    MessageAnswer messageBox(const QString& text, int style, const QString& title) override;
    std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText) override;
    QString browseForFolder(QWidget* owner, const QString& title) override;
    void setBusyCursor(bool busy) override;
    void processEvents() override;
    void sleep(int milliseconds) override;
    bool shellExecute(const QString& verb, const QString& file) override;

    // Forgets the answers, before an operation starts.
    void clearAnswers();
    // The folder last chosen and the text last entered since clearAnswers(); empty when none.
    QString lastFolder() const { return m_lastFolder; }
    QString lastInput() const { return m_lastInput; }
    // The file last handed to the shell.
    QString lastShellFile() const { return m_lastShellFile; }

private:
    UiServices& inner() const;

    std::unique_ptr<UiServices> m_inner;    // what was installed before, if anything
    std::unique_ptr<UiServices> m_standard; // the Qt dialogs, when nothing was installed
    QString m_lastFolder;
    QString m_lastInput;
    QString m_lastShellFile;
};

} // namespace vx::demo
