#include "HostUiServices.h"

#include "session/QtUiServices.h"

#include <QApplication>
#include <QWidget>

namespace vx::demo {

namespace {

// A dialog just closed leaves its shape on the windows under it until they are drawn again.
void redrawWindows() {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible())
            window->repaint();
    }
}

} // namespace

HostUiServices::HostUiServices() = default;
HostUiServices::~HostUiServices() = default;

HostUiServices::Installation::Installation() {
    auto services = std::make_unique<HostUiServices>();
    m_services = services.get();
    m_services->m_inner = installUiServices(std::move(services));
    if (!m_services->m_inner)
        m_services->m_standard = std::make_unique<QtUiServices>();
}

HostUiServices::Installation::~Installation() {
    // Whatever was installed before comes back; this instance goes with the returned pointer.
    installUiServices(std::move(m_services->m_inner));
}

UiServices& HostUiServices::inner() const {
    return m_inner ? *m_inner : *m_standard;
}

MessageAnswer HostUiServices::messageBox(const QString& text, int style, const QString& title) {
    const MessageAnswer answer = inner().messageBox(text, style, title);
    redrawWindows();
    return answer;
}

std::optional<QString> HostUiServices::inputBox(const QString& prompt, const QString& title,
                                                const QString& defaultText) {
    std::optional<QString> answer = inner().inputBox(prompt, title, defaultText);
    if (answer)
        m_lastInput = *answer;
    redrawWindows();
    return answer;
}

QString HostUiServices::browseForFolder(QWidget* owner, const QString& title) {
    const QString folder = inner().browseForFolder(owner, title);
    if (!folder.isEmpty())
        m_lastFolder = folder;
    redrawWindows();
    return folder;
}

void HostUiServices::setBusyCursor(bool busy) {
    inner().setBusyCursor(busy);
}

void HostUiServices::processEvents() {
    inner().processEvents();
}

void HostUiServices::sleep(int milliseconds) {
    inner().sleep(milliseconds);
}

bool HostUiServices::shellExecute(const QString& verb, const QString& file) {
    m_lastShellFile = file;
    return inner().shellExecute(verb, file);
}

void HostUiServices::clearAnswers() {
    m_lastFolder.clear();
    m_lastInput.clear();
    m_lastShellFile.clear();
}

} // namespace vx::demo
