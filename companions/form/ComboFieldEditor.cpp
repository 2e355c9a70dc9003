#include "companions/form/ComboFieldEditor.h"

#include <QComboBox>
#include <QCompleter>
#include <QHBoxLayout>
#include <QLineEdit>

namespace vx::form {

ComboFieldEditor::ComboFieldEditor(int maxLength, QWidget* parent)
    : FieldEditor(parent)
    , m_combo(new QComboBox(this)) {
    m_combo->setObjectName(QStringLiteral("combo"));
    m_combo->setEditable(true);
    // Typed values stay typed values; the pick list is the hint table's, not the user's.
    m_combo->setInsertPolicy(QComboBox::NoInsert);
    if (maxLength > 0)
        m_combo->lineEdit()->setMaxLength(maxLength);
    m_combo->setCurrentIndex(-1);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_combo);
    setFocusProxy(m_combo);
    connect(m_combo, &QComboBox::editTextChanged, this, &FieldEditor::edited);
}

QVariant ComboFieldEditor::value() const {
    const QString text = m_combo->currentText();
    return text.isEmpty() ? QVariant() : QVariant(text);
}

void ComboFieldEditor::setValue(const QVariant& value) {
    m_combo->setEditText(value.isNull() ? QString() : value.toString());
}

void ComboFieldEditor::clear() {
    m_combo->setEditText(QString());
}

void ComboFieldEditor::setSuggestions(const QStringList& suggestions) {
    const QString text = m_combo->currentText();
    const QSignalBlocker blocker(m_combo);
    m_combo->clear();
    m_combo->addItems(suggestions);
    // Filling the list must not pick its first entry for the user.
    m_combo->setCurrentIndex(-1);
    m_combo->setEditText(text);
    if (QCompleter* completer = m_combo->completer()) {
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setCompletionMode(QCompleter::PopupCompletion);
    }
}

} // namespace vx::form
