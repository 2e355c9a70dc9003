#include "companions/form/FieldEditor.h"

#include "companions/form/CheckFieldEditor.h"
#include "companions/form/ComboFieldEditor.h"
#include "companions/form/DateFieldEditor.h"
#include "companions/form/FormDescription.h"
#include "companions/form/LineFieldEditor.h"
#include "companions/form/ListFieldEditor.h"
#include "companions/form/MemoFieldEditor.h"
#include "companions/form/NumericFieldEditor.h"

namespace vx::form {

FieldEditor::FieldEditor(QWidget* parent)
    : QWidget(parent) {
    // A form row is as tall as its editor needs; spare height stays below the last row.
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

FieldEditor::~FieldEditor() = default;

FieldEditor* createFieldEditor(const FieldDescription& field, QWidget* parent) {
    switch (field.type) {
    case FieldType::Memo:
        return new MemoFieldEditor(parent);
    case FieldType::Numeric:
        return new NumericFieldEditor(parent);
    case FieldType::Check:
        return new CheckFieldEditor(parent);
    case FieldType::Combo:
        return new ComboFieldEditor(field.length, parent);
    case FieldType::List:
        return new ListFieldEditor(parent);
    case FieldType::Date:
        return new DateFieldEditor(parent);
    case FieldType::Edit:
    case FieldType::Unknown:
        break;
    }
    return new LineFieldEditor(field.length, parent);
}

} // namespace vx::form
