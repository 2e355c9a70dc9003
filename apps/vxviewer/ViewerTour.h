#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace vx {
class UnattendedUiServices;
}

namespace vx::viewer {

class ViewerWindow;

// vxviewer --tour DIR: opens an export, searches it by a field, by a keyword and by both, and
// opens a document, saving a numbered screenshot of the window after each step.
class ViewerTour {
public:
    ViewerTour(ViewerWindow& window, UnattendedUiServices& ui, const QString& outputDir);

    // The number of screenshots saved; steps that could not be done are in failures().
    int run(const QString& exportFolder);
    QStringList failures() const { return m_failures; }

private:
    void shoot(const QString& name);
    void step(const QString& what, const std::function<void()>& action);

    ViewerWindow& m_window;
    UnattendedUiServices& m_ui;
    QString m_outputDir;
    int m_saved = 0;
    QStringList m_failures;
};

} // namespace vx::viewer
