#include "hitlist/FieldTypeLookup.h"

#include "session/FormDefinition.h"
#include "session/companions/VXDynaForm.h"

namespace vx {

ColumnFieldType GetFieldType(VXDynaForm* form, const QString& caption) {
    const QString lowered = caption.toLower();
    if (lowered == QLatin1String("itemid"))
        return {QStringLiteral("NumericField"), QStringLiteral("itemid")};
    if (lowered == QLatin1String("indexdate"))
        return {QStringLiteral("DateField"), QStringLiteral("idx_date")};

    ColumnFieldType found;
    if (!form)
        return found;
    form->MoveFirstField();
    while (!form->FieldEOF()) {
        if (form->FieldCaption().toLower() == lowered) {
            const QString name = form->FieldName();
            found.type =
                GetControlValuesFromXML(QStringLiteral("ColumnName"), name, QStringLiteral("Type"));
            found.columnName = GetControlValuesFromXML(QStringLiteral("ColumnName"), name,
                                                       QStringLiteral("ColumnName"));
        }
        form->MoveNextField();
    }
    return found;
}

} // namespace vx
