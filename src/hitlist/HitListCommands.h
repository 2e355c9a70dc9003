#pragma once

#include <QObject>
#include <QPoint>
#include <QString>

namespace vx {

class HitListSession;
struct HitListParts;

// What the toolbar, the keys, the tabs and the grid's header ask of the hit list: the command
// dispatcher and its commands (navigation, the edit and versions views, saving, the document
// operations), sorting by a column and the keyboard shortcuts.
class HitListCommands : public QObject {
    Q_OBJECT

public:
    HitListCommands(HitListSession& session, QObject* parent);
    ~HitListCommands() override;

    // A toolbar button's command (a check button has already toggled). Shows its own errors.
    void buttonClick(const QString& key);
    // Presses or releases a check button and runs its command.
    void pressAndRun(const QString& key, bool pressed);

    // The results view: grid shown, form, tabs and pickers hidden, results buttons.
    void showResultsView();

    // "ASC" or "DESC" on the clicked column; the versions view always sorts by item id.
    void sortByColumn(const QString& direction);
    void headClick(int column);
    // The same from the grid's context menu, popped up at `globalPosition`.
    void headClick(int column, const QPoint& globalPosition);
    void dblClick();
    // Tab strip click: shows the page of the selected tab.
    void switchTab();

    // Control key-down; true when the key was used.
    bool keyDown(int key, Qt::KeyboardModifiers modifiers);
    // Keys the results grid itself gets first; true when handled.
    bool gridKeyDown(int key, Qt::KeyboardModifiers modifiers);
    // Key-down of the record form (platform key codes).
    void formKeyDown(short keyCode, short shift);

private:
    void navigate(const QString& key);
    void edit();
    void archive();
    void enterVersionsView();
    void leaveVersionsView();
    void save();
    void saveQuery();
    // Edit and Archive need exactly one document; false (message shown, button released)
    // otherwise.
    bool requireOneDocument(const QString& key, const QString& title);
    void hidePages();

    HitListSession& m_session;
    HitListParts& m_parts;
};

} // namespace vx
