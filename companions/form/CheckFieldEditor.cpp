#include "companions/form/CheckFieldEditor.h"

#include "session/Conversions.h"

#include <QCheckBox>
#include <QHBoxLayout>

namespace vx::form {

CheckFieldEditor::CheckFieldEditor(QWidget* parent)
    : FieldEditor(parent)
    , m_check(new QCheckBox(this)) {
    m_check->setObjectName(QStringLiteral("check"));
    m_check->setTristate(true);
    m_check->setCheckState(Qt::PartiallyChecked);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_check);
    layout->addStretch();
    setFocusProxy(m_check);
    showState();
    connect(m_check, &QCheckBox::stateChanged, this, [this] {
        showState();
        emit edited();
    });
}

QVariant CheckFieldEditor::value() const {
    switch (m_check->checkState()) {
    case Qt::Checked:
        return true;
    case Qt::Unchecked:
        return false;
    default:
        return {};
    }
}

void CheckFieldEditor::setValue(const QVariant& value) {
    if (value.isNull() || value.toString().trimmed().isEmpty()) {
        m_check->setCheckState(Qt::PartiallyChecked);
        return;
    }
    bool checked = false;
    if (value.typeId() == QMetaType::Bool)
        checked = value.toBool();
    else if (value.typeId() == QMetaType::QString)
        checked = textToBoolean(value.toString()); // throws type mismatch
    else
        checked = toDouble(value) != 0.0;
    m_check->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

void CheckFieldEditor::clear() {
    m_check->setCheckState(Qt::PartiallyChecked);
}

// The box's own text says which of the three states it is in; the middle state is easy to miss.
void CheckFieldEditor::showState() {
    switch (m_check->checkState()) {
    case Qt::Checked:
        m_check->setText(tr("Yes"));
        break;
    case Qt::Unchecked:
        m_check->setText(tr("No"));
        break;
    default:
        m_check->setText(tr("Not set"));
        break;
    }
}

} // namespace vx::form
