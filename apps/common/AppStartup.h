#pragma once

#include <QString>
#include <QTemporaryDir>
#include <initializer_list>

namespace vx {
class UnattendedUiServices;
}

namespace vx::apps {

// Before QApplication exists: without a display, or for a run that needs none (one of
// headlessOptions on the command line), the offscreen platform is chosen instead of failing
// inside Qt. A platform the user chose stays.
void choosePlatform(int argc, char** argv, std::initializer_list<const char*> headlessOptions);

// Whether windows can be shown (false on the offscreen and minimal platforms).
bool displayAvailable();

// A run nobody watches (tours): everything it writes besides its results stays in a folder of
// its own, removed at the end, and the controls' questions are answered and echoed to stdout.
class UnattendedWorkspace {
public:
    UnattendedWorkspace();

    bool isValid() const { return m_work.isValid(); }
    QString path() const { return m_work.path(); }
    // A path inside the workspace.
    QString filePath(const QString& name) const { return m_work.filePath(name); }
    UnattendedUiServices& ui() const { return *m_ui; }

private:
    QTemporaryDir m_work;
    UnattendedUiServices* m_ui = nullptr; // owned by the installed UI services
};

} // namespace vx::apps
