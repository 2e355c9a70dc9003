#include "companions/form/FormDescription.h"

#include "data/Error.h"
#include "session/FormDefinition.h"
#include "session/ShownText.h"
#include "session/XmlShape.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>

namespace vx::form {

namespace {

bool isTrue(const QString& text) {
    return text.trimmed().compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
}

int numberOf(const QString& text) {
    bool ok = false;
    const int number = text.trimmed().toInt(&ok);
    return ok && number > 0 ? number : 0;
}

void requirePlainName(const QString& name, const QString& what, const QString& field,
                      const QString& path) {
    if (name.isEmpty() || isPlainIdentifier(name))
        return;
    throw Error(
        ErrorNumber::InvalidArgument,
        QStringLiteral("The form definition \"%1\" is refused: the %2 \"%3\" of the "
                       "field \"%4\" is not a plain name (letters, digits and \"_\").")
            .arg(QDir::toNativeSeparators(path), what, shownText(name, 60), shownText(field, 60)));
}

} // namespace

FormDescription FormDescription::load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot read the form definition \"%1\": %2")
                        .arg(QDir::toNativeSeparators(path), file.errorString()));
    return fromText(QString::fromUtf8(file.readAll()), path);
}

FormDescription FormDescription::fromText(const QString& xml, const QString& path) {
    requireSafeXmlShape(xml, QDir::toNativeSeparators(path));
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(xml, &message, &line, &column))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The form definition \"%1\" is not well-formed (line %2, "
                                   "column %3): %4")
                        .arg(QDir::toNativeSeparators(path))
                        .arg(line)
                        .arg(column)
                        .arg(message));

    FormDescription form;
    const FormDefinition definition = FormDefinition::fromText(xml);
    for (const FormControl& control : definition.controls()) {
        FieldDescription field;
        field.columnName = control.columnName.trimmed();
        field.caption = control.caption.trimmed();
        if (field.caption.isEmpty())
            field.caption = field.columnName;
        field.tableName = control.tableName.trimmed();
        field.type = fieldTypeFromName(control.type.trimmed());
        field.allowUpdate = isTrue(control.allowUpdate);
        field.required = isTrue(control.value(QStringLiteral("required")));
        field.width = numberOf(control.value(QStringLiteral("width")));
        field.length = numberOf(control.value(QStringLiteral("length")));
        field.initTableName = control.value(QStringLiteral("inittablename")).trimmed();
        field.initColumnName = control.value(QStringLiteral("initcolumnname")).trimmed();
        const QString label = field.caption.isEmpty() ? control.columnName : field.caption;
        requirePlainName(field.columnName, QStringLiteral("column"), label, path);
        requirePlainName(field.tableName, QStringLiteral("table"), label, path);
        requirePlainName(field.initTableName, QStringLiteral("list table"), label, path);
        requirePlainName(field.initColumnName, QStringLiteral("list column"), label, path);
        form.fields.append(field);
    }

    const QString link = document.documentElement()
                             .firstChildElement(QStringLiteral("groupdatalink"))
                             .text()
                             .trimmed();
    if (!link.isEmpty()) {
        // A relative link (a portable copy names "veltrane.udl") sits beside the definition.
        const QString folder = QFileInfo(path).absolutePath();
        form.dataLinkPath = QDir::cleanPath(QDir(folder).absoluteFilePath(link));
    }

    for (const FieldDescription& field : std::as_const(form.fields)) {
        if (!field.tableName.isEmpty()) {
            form.groupTable = field.tableName;
            break;
        }
    }
    if (form.groupTable.isEmpty())
        form.groupTable = QFileInfo(path).completeBaseName();
    if (!isPlainIdentifier(form.groupTable))
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The form definition \"%1\" is refused: its group table "
                                   "\"%2\" is not a plain name (letters, digits and \"_\").")
                        .arg(QDir::toNativeSeparators(path), shownText(form.groupTable, 60)));
    return form;
}

} // namespace vx::form
