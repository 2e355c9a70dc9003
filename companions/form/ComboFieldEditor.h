#pragma once

#include "companions/form/FieldEditor.h"

class QComboBox;

namespace vx::form {

// Free text with a pick list of suggestions (the field's hint table).
class ComboFieldEditor : public FieldEditor {
    Q_OBJECT

public:
    explicit ComboFieldEditor(int maxLength, QWidget* parent = nullptr);

    QVariant value() const override;
    void setValue(const QVariant& value) override;
    void clear() override;
    void setSuggestions(const QStringList& suggestions) override;

private:
    QComboBox* m_combo;
};

} // namespace vx::form
