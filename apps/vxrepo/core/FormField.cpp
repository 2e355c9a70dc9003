#include "core/FormField.h"

#include "data/Error.h"
#include "session/ShownText.h"

#include <QRegularExpression>

namespace vx::repo {

int columnLength(const FormField& field) {
    switch (field.type) {
    case FieldType::Edit:
    case FieldType::Combo:
        return field.length > 0 ? field.length : DefaultTextLength;
    case FieldType::List:
        return MaximumTextLength;
    default:
        return 0;
    }
}

QString columnDeclaration(const FormField& field) {
    switch (field.type) {
    case FieldType::Memo:
        return QStringLiteral("LONGTEXT");
    case FieldType::Edit:
    case FieldType::Combo:
    case FieldType::List:
        return QStringLiteral("VARCHAR(%1)").arg(columnLength(field));
    case FieldType::Numeric:
        return QStringLiteral("LONG");
    case FieldType::Check:
        return QStringLiteral("YESNO");
    case FieldType::Date:
        return QStringLiteral("DATETIME");
    case FieldType::Unknown:
        break;
    }
    return {};
}

bool hasHintTable(const FormField& field) {
    return field.type == FieldType::Combo && field.allowUpdate;
}

int defaultWidth(FieldType type) {
    switch (type) {
    case FieldType::Memo:
        return 400;
    case FieldType::Numeric:
        return 120;
    case FieldType::Check:
        return 24;
    case FieldType::Date:
        return 140;
    case FieldType::List:
        return 300;
    default:
        return 260;
    }
}

bool isPlainName(const QString& name) {
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z][A-Za-z0-9_]*$"));
    return plain.match(name).hasMatch();
}

void validateField(const FormField& field, const QString& formName) {
    const QString where = formName + QStringLiteral(": ");
    if (field.columnName.isEmpty())
        throw Error(ErrorNumber::InvalidArgument,
                    where + QStringLiteral("a control has no columnname element."));
    if (!isPlainName(field.columnName))
        throw Error(ErrorNumber::InvalidArgument,
                    where + QStringLiteral("column name '%1' must start with a letter and hold "
                                           "only letters, digits and '_'.")
                                .arg(shownText(field.columnName)));
    if (field.columnName.compare(QLatin1String("itemid"), Qt::CaseInsensitive) == 0)
        throw Error(ErrorNumber::InvalidArgument,
                    where + QStringLiteral("'itemid' is the group table's key and cannot be a "
                                           "field."));
    if (field.type == FieldType::Unknown)
        throw Error(ErrorNumber::InvalidArgument,
                    where + QStringLiteral("field '%1' has no known type; use one of MemoField, "
                                           "EditField, NumericField, CheckField, ComboField, "
                                           "ListField, DateField.")
                                .arg(field.columnName));
    if (field.length < 0 || field.length > MaximumTextLength)
        throw Error(ErrorNumber::InvalidArgument,
                    where + QStringLiteral("field '%1' asks for %2 characters; text columns hold "
                                           "at most %3 (use a MemoField for longer text).")
                                .arg(field.columnName)
                                .arg(field.length)
                                .arg(MaximumTextLength));
}

} // namespace vx::repo
