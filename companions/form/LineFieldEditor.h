#pragma once

#include "companions/form/FieldEditor.h"

class QLineEdit;

namespace vx::form {

// Single-line text (edit fields and anything of an unknown type).
class LineFieldEditor : public FieldEditor {
    Q_OBJECT

public:
    // maxLength 0: no limit.
    explicit LineFieldEditor(int maxLength, QWidget* parent = nullptr);

    QVariant value() const override;
    void setValue(const QVariant& value) override;
    void clear() override;

private:
    QLineEdit* m_edit;
};

} // namespace vx::form
