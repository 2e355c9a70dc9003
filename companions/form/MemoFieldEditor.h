#pragma once

#include "companions/form/FieldEditor.h"

class QPlainTextEdit;

namespace vx::form {

// Multi-line text.
class MemoFieldEditor : public FieldEditor {
    Q_OBJECT

public:
    explicit MemoFieldEditor(QWidget* parent = nullptr);

    QVariant value() const override;
    void setValue(const QVariant& value) override;
    void clear() override;

private:
    QPlainTextEdit* m_edit;
};

} // namespace vx::form
