#include "companions/form/NumericFieldEditor.h"

#include "session/Conversions.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <limits>
#include <optional>

namespace vx::form {

namespace {

std::optional<qint32> wholeNumber(const QString& text) {
    bool ok = false;
    const qlonglong number = text.trimmed().toLongLong(&ok);
    if (!ok || number < std::numeric_limits<qint32>::min() ||
        number > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return qint32(number);
}

} // namespace

NumericFieldEditor::NumericFieldEditor(QWidget* parent)
    : FieldEditor(parent)
    , m_edit(new QLineEdit(this)) {
    m_edit->setObjectName(QStringLiteral("number"));
    m_edit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_edit->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[-+]?[0-9]{0,10}")), m_edit));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_edit);
    setFocusProxy(m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, &FieldEditor::edited);
}

QVariant NumericFieldEditor::value() const {
    const QString text = m_edit->text().trimmed();
    if (text.isEmpty())
        return {};
    if (const auto number = wholeNumber(text))
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
    if (text.isEmpty() || wholeNumber(text))
        return {};
    return QStringLiteral("\"%1\" is not a whole number between -2147483648 and 2147483647.")
        .arg(text);
}

} // namespace vx::form
