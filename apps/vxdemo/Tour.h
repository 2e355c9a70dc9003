#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QAction;
class QObject;
class QWidget;

namespace vx {
class UnattendedUiServices;
}

namespace vx::demo {

class DemoWindow;

// A typical session run unattended on the demo window, saving a numbered PNG of the window after
// each step: index a document, search, sort, open a record, edit and save it, look at a
// document's versions, save the search as a favourite and run it again, and export the results
// through the host's menu (a table, a text file and a portable export to a folder), leaving
// what the exports wrote under outputDir/outputs.
class Tour {
public:
    // The tour's own files (the document it indexes) go to workDir.
    Tour(DemoWindow& window, UnattendedUiServices& ui, const QString& outputDir,
         const QString& workDir);

    // Runs every step; the number of screenshots saved. A step that fails is reported and the
    // tour goes on with the next one.
    int run();
    QStringList failures() const { return m_failures; }
    QStringList screenshots() const { return m_screenshots; }

private:
    void step(const QString& name, const std::function<void()>& action);
    void indexDocument();
    void searchAndSort();
    void editRecord();
    void exportResults();
    void showVersions();
    void useFavourite();

    QWidget* hitList() const;
    QAction* toolbarButton(const QString& key) const;
    void pressToolbarButton(const QString& key);
    QString writeTourDocument() const;
    void triggerHostAction(const QString& name);
    QString outputsDir() const;

    DemoWindow& m_window;
    UnattendedUiServices& m_ui;
    QString m_outputDir;
    QString m_workDir;
    QStringList m_failures;
    QStringList m_screenshots;
};

} // namespace vx::demo
