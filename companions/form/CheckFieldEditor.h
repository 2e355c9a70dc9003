#pragma once

#include "companions/form/FieldEditor.h"

class QCheckBox;

namespace vx::form {

// A check box with a third, unset state: a field the user never touched reads empty.
class CheckFieldEditor : public FieldEditor {
    Q_OBJECT

public:
    explicit CheckFieldEditor(QWidget* parent = nullptr);

    // true, false, or invalid when unset.
    QVariant value() const override;
    void setValue(const QVariant& value) override;
    void clear() override;

private:
    void showState();

    QCheckBox* m_check;
};

} // namespace vx::form
