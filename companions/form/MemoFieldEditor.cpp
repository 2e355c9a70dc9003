#include "companions/form/MemoFieldEditor.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPlainTextEdit>

namespace vx::form {

MemoFieldEditor::MemoFieldEditor(QWidget* parent)
    : FieldEditor(parent)
    , m_edit(new QPlainTextEdit(this)) {
    m_edit->setObjectName(QStringLiteral("memo"));
    // Tab moves on to the next field instead of being typed into the text.
    m_edit->setTabChangesFocus(true);
    const int lineHeight = QFontMetrics(m_edit->font()).lineSpacing();
    m_edit->setFixedHeight(lineHeight * 4 + 2 * m_edit->frameWidth() + 8);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_edit);
    setFocusProxy(m_edit);
    connect(m_edit, &QPlainTextEdit::textChanged, this, &FieldEditor::edited);
}

QVariant MemoFieldEditor::value() const {
    const QString text = m_edit->toPlainText();
    return text.isEmpty() ? QVariant() : QVariant(text);
}

void MemoFieldEditor::setValue(const QVariant& value) {
    m_edit->setPlainText(value.isNull() ? QString() : value.toString());
}

void MemoFieldEditor::clear() {
    m_edit->clear();
}

} // namespace vx::form
