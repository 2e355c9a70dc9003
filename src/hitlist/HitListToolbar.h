#pragma once

#include <QString>
#include <QToolBar>

class QAction;

namespace vx {

// The hit list's command bar ("tbToolbar1"). Each command is a QAction whose object name is its
// key (First, Previous, Next ... Veltrane); Edit and Archive are check buttons whose pressed
// state is part of the control's state.
class HitListToolbar : public QToolBar {
    Q_OBJECT

public:
    explicit HitListToolbar(QWidget* parent = nullptr);
    ~HitListToolbar() override;

    static const QStringList& keys();

    // Null for an unknown key.
    QAction* button(const QString& key) const;
    bool isPressed(const QString& key) const;
    // Changes a check button's state without running its command.
    void setPressed(const QString& key, bool pressed);

    // Enables every button whose permission mask is set in `permission`; never disables.
    void enableByPermission(qint32 permission);

    // Button visibility of the three views.
    void showResultsView(bool revisionTablePresent);
    void showEditView();
    void showVersionsView();

signals:
    // A button was clicked (a check button has already toggled).
    void buttonClick(const QString& key);
};

} // namespace vx
