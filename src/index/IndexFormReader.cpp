#include "index/IndexFormReader.h"

#include "server/LateBinding.h"
#include "session/FormDefinition.h"
#include "session/companions/VXDynaForm.h"

namespace vx::indexform {

FieldType fieldType(const QString& column) {
    return fieldTypeFromName(
        GetControlValuesFromXML(QStringLiteral("ColumnName"), column, QStringLiteral("Type")));
}

bool isEmptyValue(const QVariant& value) {
    if (!value.isValid() || value.isNull())
        return true;
    return value.typeId() == QMetaType::QString && value.toString().isEmpty();
}

QString cutAndTrimmed(const QVariant& value) {
    const QString text = value.toString().left(MaxTextLength);
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == QLatin1Char(' '))
        ++first;
    while (last > first && text.at(last - 1) == QLatin1Char(' '))
        --last;
    return text.mid(first, last - first);
}

QString joinedListEntries(VXDynaForm& form, int& count) {
    QStringList entries;
    form.MoveFirstListItem();
    while (form.ListItemPresent()) {
        entries.append(form.ListItemText());
        form.MoveNextListItem();
    }
    count = int(entries.size());
    return entries.join(QLatin1Char(';'));
}

QString valueText(const QVariant& value) {
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    return value.toString();
}

QStringList pickedKeywords(QObject* picker) {
    QStringList words;
    callMember(picker, "MoveFirst");
    while (!readMember(picker, "EOF").toBool()) {
        words.append(readMember(picker, "CurrentListValue").toString());
        callMember(picker, "MoveNext");
    }
    return words;
}

} // namespace vx::indexform
