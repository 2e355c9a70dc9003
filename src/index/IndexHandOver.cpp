#include "index/IndexHandOver.h"

#include "data/Error.h"
#include "index/IndexFormReader.h"
#include "session/Conversions.h"
#include "session/HandOverFile.h"
#include "session/SystemFolder.h"
#include "session/UiServices.h"
#include "session/companions/VXDynaForm.h"

namespace vx {

namespace {

// The value a field of the given type takes from a hand-over text; invalid for a type that the
// hand-over does not fill.
QVariant convertedValue(FieldType type, const QString& text) {
    switch (type) {
    case FieldType::Memo:
    case FieldType::Edit:
    case FieldType::Combo:
    case FieldType::List:
        return text;
    case FieldType::Check:
        return textToBoolean(text);
    case FieldType::Numeric:
        return toInt32(text);
    case FieldType::Date:
        return textToDate(text);
    case FieldType::Unknown:
        break;
    }
    return {};
}

} // namespace

IndexHandOver::IndexHandOver(const QString& currentLibrary, const QString& groupName)
    : m_section(currentLibrary + QLatin1Char('-') + groupName) {}

bool IndexHandOver::apply(VXDynaForm& form) const {
    HandOverFile file(handOverFilePath(FileName), m_section);
    if (!file.exists())
        return false;
    try {
        form.ResetFields();
        for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
            const QString column = form.FieldName();
            const FieldType type = indexform::fieldType(column);
            if (type == FieldType::Unknown)
                continue;
            const std::optional<QString> text = file.value(column);
            if (!text)
                continue;
            form.setFieldValue(convertedValue(type, *text));
        }
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly, QString());
        return false;
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()), MessageStyle::OkOnly, QString());
        return false;
    }
    file.remove();
    return true;
}

} // namespace vx
