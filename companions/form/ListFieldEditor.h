#pragma once

#include "companions/form/FieldEditor.h"

class QLineEdit;
class QListWidget;
class QToolButton;

namespace vx::form {

// Several entries of one field, kept in order; stored joined by ";". New entries are typed into
// the line above the list and added with Enter or the Add button; the selected entry can be
// removed or moved up and down, and edited in place.
class ListFieldEditor : public FieldEditor {
    Q_OBJECT

public:
    explicit ListFieldEditor(QWidget* parent = nullptr);

    // The entries joined by ";"; invalid when there are none.
    QVariant value() const override;
    // A text is split at ";" into entries (empty pieces dropped).
    void setValue(const QVariant& value) override;
    void clear() override;
    QString problem() const override;

    // The entries in order; text typed but not yet added counts as the last entry, so it is
    // not lost when the form is read.
    QStringList entries() const override;
    void clearEntries() override;
    void addEntry(const QString& text) override;

private:
    void addTypedEntry();
    void removeSelected();
    void moveSelected(int offset);
    void updateButtons();

    QLineEdit* m_entry;
    QListWidget* m_list;
    QToolButton* m_add;
    QToolButton* m_remove;
    QToolButton* m_up;
    QToolButton* m_down;
};

} // namespace vx::form
