#include "companions/form/NumericFieldEditor.h"

#include "data/Error.h"
#include "session/Conversions.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <optional>

namespace vx::form {

namespace {

// What assigning the text to a 32-bit integer column stores: fractions are rounded half to
// even, the locale's grouping is accepted; nothing when the column would refuse the text.
std::optional<qint32> storedNumber(const QString& text) {
    try {
        return toInt32(text.trimmed());
    } catch (const Error&) {
        return std::nullopt;
    }
}

} // namespace

NumericFieldEditor::NumericFieldEditor(QWidget* parent)
    : FieldEditor(parent)
    , m_edit(new QLineEdit(this)) {
    m_edit->setObjectName(QStringLiteral("number"));
    m_edit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // No validator: a character the field cannot take is shown and reported, not dropped.
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_edit);
    setFocusProxy(m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, &FieldEditor::edited);
    // On leaving the field, a number that is stored otherwise than typed ("12.50") shows what
    // will be stored.
    connect(m_edit, &QLineEdit::editingFinished, this, [this] {
        const QString text = m_edit->text().trimmed();
        if (const auto number = storedNumber(text); number && QString::number(*number) != text)
            m_edit->setText(QString::number(*number));
    });
}

QVariant NumericFieldEditor::value() const {
    const QString text = m_edit->text().trimmed();
    if (text.isEmpty())
        return {};
    if (const auto number = storedNumber(text))
        return *number;
    return text;
}

void NumericFieldEditor::setValue(const QVariant& value) {
    if (value.isNull() || value.toString().trimmed().isEmpty()) {
        m_edit->clear();
        return;
    }
    // Throws type mismatch or overflow, as assigning to a number would.
    m_edit->setText(QString::number(toInt32(value)));
}

void NumericFieldEditor::clear() {
    m_edit->clear();
}

QString NumericFieldEditor::problem() const {
    const QString text = m_edit->text().trimmed();
    if (text.isEmpty() || storedNumber(text))
        return {};
    try {
        toInt32(text);
    } catch (const Error& error) {
        if (error.number() == ErrorNumber::Overflow)
            return QStringLiteral("%1 is outside the range -2147483648 to 2147483647.").arg(text);
    }
    return QStringLiteral("\"%1\" is not a number.").arg(text);
}

} // namespace vx::form
