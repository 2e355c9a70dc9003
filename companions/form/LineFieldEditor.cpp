#include "companions/form/LineFieldEditor.h"

#include <QHBoxLayout>
#include <QLineEdit>

namespace vx::form {

LineFieldEditor::LineFieldEditor(int maxLength, QWidget* parent)
    : FieldEditor(parent)
    , m_edit(new QLineEdit(this)) {
    m_edit->setObjectName(QStringLiteral("edit"));
    if (maxLength > 0)
        m_edit->setMaxLength(maxLength);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_edit);
    setFocusProxy(m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, &FieldEditor::edited);
}

QVariant LineFieldEditor::value() const {
    const QString text = m_edit->text();
    return text.isEmpty() ? QVariant() : QVariant(text);
}

void LineFieldEditor::setValue(const QVariant& value) {
    m_edit->setText(value.isNull() ? QString() : value.toString());
}

void LineFieldEditor::clear() {
    m_edit->clear();
}

} // namespace vx::form
