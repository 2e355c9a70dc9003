#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace vx {

// The small topmost question the Move command asks before copying or moving the selected
// documents. Its answer goes to the library-wide CopyMoveChoice ("copy", "move" or "cancel");
// answering hides it, and the command that showed it unloads it.
class CopyMoveDialog : public QDialog {
    Q_OBJECT
public:
    explicit CopyMoveDialog(QWidget* owner = nullptr);

    // Escape and closing the window answer as Cancel does.
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void answer(const QString& choice);

    QLabel* m_label = nullptr;
    QPushButton* m_copy = nullptr;
    QPushButton* m_move = nullptr;
    QPushButton* m_cancel = nullptr;
};

} // namespace vx
