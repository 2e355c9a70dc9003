#pragma once

#include "companions/form/FieldEditor.h"

class QLineEdit;

namespace vx::form {

// A whole number (the repository's numeric columns are 32-bit integers); empty allowed.
class NumericFieldEditor : public FieldEditor {
    Q_OBJECT

public:
    explicit NumericFieldEditor(QWidget* parent = nullptr);

    // A qint32, or the text as typed when it is not one (problem() then says why).
    QVariant value() const override;
    void setValue(const QVariant& value) override;
    void clear() override;
    QString problem() const override;

private:
    QLineEdit* m_edit;
};

} // namespace vx::form
