#include "query/QueryHandOver.h"

#include "session/Conversions.h"
#include "session/FormDefinition.h"
#include "session/HandOverFile.h"
#include "session/companions/VXDynaForm.h"

namespace vx::query {

namespace {

// Which end of a range the next field of that type is.
class RangeToggle {
public:
    QString nextKey(const QString& column) {
        const QString key = column + (m_fromTaken ? QStringLiteral("TO") : QStringLiteral("FROM"));
        m_fromTaken = !m_fromTaken;
        return key;
    }

private:
    bool m_fromTaken = false;
};

} // namespace

void applyQueryHandOver(VXDynaForm& form, const HandOverFile& file) {
    RangeToggle numericRange;
    RangeToggle dateRange;

    form.ResetFields();
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        const QString name = form.FieldName();
        const QString type =
            GetControlValuesFromXML(QStringLiteral("ColumnName"), name, QStringLiteral("Type"));

        if (type == QLatin1String("MemoField") || type == QLatin1String("EditField") ||
            type == QLatin1String("ComboField") || type == QLatin1String("ListField")) {
            if (const auto value = file.value(name))
                form.setFieldValue(*value);
        } else if (type == QLatin1String("CheckField")) {
            if (const auto value = file.value(name))
                form.setFieldValue(textToBoolean(*value));
        } else if (type == QLatin1String("NumericField")) {
            if (const auto value = file.value(numericRange.nextKey(name)))
                form.setFieldValue(toInt32(QVariant(*value)));
        } else if (type == QLatin1String("DateField")) {
            if (const auto value = file.value(dateRange.nextKey(name)))
                form.setFieldValue(textToDate(*value));
        }
    }
}

} // namespace vx::query
