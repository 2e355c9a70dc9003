#include "core/FormDocument.h"

#include "data/Error.h"
#include "session/FormDefinition.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace vx::repo {
namespace {

const QString ControlsTag = QStringLiteral("controls");
const QString ControlTag = QStringLiteral("control");
const QString DataLinkTag = QStringLiteral("groupdatalink");

QList<QDomElement> controlElements(const QDomDocument& document) {
    QList<QDomElement> result;
    const QDomNodeList lists = document.elementsByTagName(ControlsTag);
    for (int i = 0; i < lists.count(); ++i) {
        for (QDomElement control = lists.at(i).firstChildElement(ControlTag); !control.isNull();
             control = control.nextSiblingElement(ControlTag))
            result.append(control);
    }
    return result;
}

QString childText(const QDomElement& control, const QString& tag) {
    return control.firstChildElement(tag).text().trimmed();
}

void setChild(QDomDocument& document, QDomElement& parent, const QString& tag, const QString& value,
              bool overwrite) {
    QDomElement child = parent.firstChildElement(tag);
    if (!child.isNull() && !overwrite)
        return;
    if (child.isNull()) {
        child = document.createElement(tag);
        parent.appendChild(child);
    }
    while (child.hasChildNodes())
        child.removeChild(child.firstChild());
    child.appendChild(document.createTextNode(value));
}

QString boolText(bool value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

// The quoting a query puts around the field's values: dates in '#', numbers and flags bare.
QString literalFor(FieldType type) {
    switch (type) {
    case FieldType::Date:
        return QStringLiteral("#");
    case FieldType::Numeric:
    case FieldType::Check:
        return QString();
    default:
        return QStringLiteral("'");
    }
}

// Where a field's pick list comes from: its hint table for updatable combos, the table named
// group + column + "Hints" for lists (the portable export copies that one), the group table
// itself otherwise.
QString initTableFor(const FormField& field, const QString& groupName) {
    if (hasHintTable(field) || field.type == FieldType::List)
        return hintTableName(groupName, field.columnName);
    return groupName;
}

} // namespace

FormDocument FormDocument::load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::Unspecified, QStringLiteral("Cannot read the form definition "
                                                             "%1: %2")
                                                  .arg(path, file.errorString()));
    return fromText(QString::fromUtf8(file.readAll()), QFileInfo(path).fileName());
}

FormDocument FormDocument::fromText(const QString& xml, const QString& name) {
    FormDocument form;
    form.m_name = name;
    QString message;
    int line = 0;
    int column = 0;
    if (!form.m_document.setContent(xml, &message, &line, &column))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("%1 is not a well-formed form definition (line %2, column "
                                   "%3): %4")
                        .arg(name)
                        .arg(line)
                        .arg(column)
                        .arg(message));
    if (form.m_document.elementsByTagName(ControlsTag).isEmpty())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("%1 has no controls element; each field is a control element "
                                   "inside it.")
                        .arg(name));
    return form;
}

FormDocument FormDocument::fromFields(const QString& groupName, const QList<FormField>& fields) {
    FormDocument form;
    form.m_name = groupName + QStringLiteral(".xml");
    form.m_document.appendChild(form.m_document.createProcessingInstruction(
        QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    QDomElement root = form.m_document.createElement(QStringLiteral("form"));
    form.m_document.appendChild(root);
    setChild(form.m_document, root, QStringLiteral("groupname"), groupName, true);
    setChild(form.m_document, root, DataLinkTag, QString(), true);
    QDomElement controls = form.m_document.createElement(ControlsTag);
    root.appendChild(controls);
    for (const FormField& field : fields) {
        QDomElement control = form.m_document.createElement(ControlTag);
        controls.appendChild(control);
        setChild(form.m_document, control, QStringLiteral("caption"), field.caption, true);
        setChild(form.m_document, control, QStringLiteral("columnname"), field.columnName, true);
        setChild(form.m_document, control, QStringLiteral("type"), fieldTypeName(field.type), true);
        setChild(form.m_document, control, QStringLiteral("allowupdate"),
                 boolText(field.allowUpdate), true);
        setChild(form.m_document, control, QStringLiteral("required"), boolText(field.required),
                 true);
        if (field.width > 0)
            setChild(form.m_document, control, QStringLiteral("width"),
                     QString::number(field.width), true);
        if (field.length > 0)
            setChild(form.m_document, control, QStringLiteral("length"),
                     QString::number(field.length), true);
    }
    form.complete(groupName);
    return form;
}

QList<FormField> FormDocument::fields() const {
    const FormDefinition definition = FormDefinition::fromText(m_document.toString());
    QList<FormField> result;
    for (const FormControl& control : definition.controls()) {
        FormField field;
        field.caption = control.caption.trimmed();
        field.columnName = control.columnName.trimmed();
        const QString typeText = control.type.trimmed();
        field.type = fieldTypeFromName(typeText);
        if (field.type == FieldType::Unknown)
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("%1: field '%2' has the unknown type '%3'; use one of "
                                       "MemoField, EditField, NumericField, CheckField, "
                                       "ComboField, ListField, DateField (letter case counts).")
                            .arg(m_name, field.columnName, typeText));
        field.allowUpdate =
            control.allowUpdate.trimmed().compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
        field.required = control.value(QStringLiteral("required"))
                             .trimmed()
                             .compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
        bool ok = false;
        const QString lengthText = control.value(QStringLiteral("length")).trimmed();
        field.length = lengthText.toInt(&ok);
        if (!lengthText.isEmpty() && !ok)
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("%1: field '%2' has the length '%3', which is not a "
                                       "number.")
                            .arg(m_name, field.columnName, lengthText));
        field.width = control.value(QStringLiteral("width")).trimmed().toInt();
        if (field.caption.isEmpty())
            field.caption = field.columnName;
        result.append(field);
    }
    return result;
}

void FormDocument::complete(const QString& groupName) {
    for (QDomElement control : controlElements(m_document)) {
        FormField field;
        field.columnName = childText(control, QStringLiteral("columnname"));
        field.type = fieldTypeFromName(childText(control, QStringLiteral("type")));
        field.allowUpdate = childText(control, QStringLiteral("allowupdate"))
                                .compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
        field.length = childText(control, QStringLiteral("length")).toInt();
        const bool pickList = hasHintTable(field) || field.type == FieldType::List;
        auto ensure = [&](const QString& tag, const QString& value) {
            setChild(m_document, control, tag, value, false);
        };
        // The library compares these texts exactly: no stray blanks or line breaks around them.
        for (const QString& tag : {QStringLiteral("columnname"), QStringLiteral("type")}) {
            if (!control.firstChildElement(tag).isNull())
                setChild(m_document, control, tag, childText(control, tag), true);
        }
        ensure(QStringLiteral("caption"), field.columnName);
        ensure(QStringLiteral("columnname"), field.columnName);
        ensure(QStringLiteral("type"), fieldTypeName(field.type));
        ensure(QStringLiteral("allowupdate"), boolText(field.allowUpdate));
        ensure(QStringLiteral("tablename"), groupName);
        ensure(QStringLiteral("inittablename"), initTableFor(field, groupName));
        ensure(QStringLiteral("initcolumnname"), field.columnName);
        ensure(QStringLiteral("literalprefix"), literalFor(field.type));
        ensure(QStringLiteral("literalsuffix"), literalFor(field.type));
        ensure(QStringLiteral("hintlisttype"),
               pickList ? QStringLiteral("1") : QStringLiteral("0"));
        ensure(QStringLiteral("required"), boolText(false));
        ensure(QStringLiteral("width"), QString::number(defaultWidth(field.type)));
        ensure(QStringLiteral("length"), QString::number(columnLength(field)));
    }
    QDomElement root = m_document.documentElement();
    if (root.firstChildElement(DataLinkTag).isNull()) {
        QDomElement link = m_document.createElement(DataLinkTag);
        root.insertBefore(link, root.firstChild());
    }
}

QString FormDocument::groupDataLink() const {
    return m_document.documentElement().firstChildElement(DataLinkTag).text().trimmed();
}

void FormDocument::setGroupDataLink(const QString& path) {
    QDomElement root = m_document.documentElement();
    QDomElement link = root.firstChildElement(DataLinkTag);
    if (link.isNull()) {
        link = m_document.createElement(DataLinkTag);
        root.insertBefore(link, root.firstChild());
    }
    while (link.hasChildNodes())
        link.removeChild(link.firstChild());
    link.appendChild(m_document.createTextNode(path));
}

FormDocument FormDocument::queryForm() const {
    FormDocument query;
    query.m_document = m_document.cloneNode(true).toDocument();
    query.m_name = QFileInfo(m_name).completeBaseName() + QStringLiteral(".xqr");
    for (QDomElement control : controlElements(query.m_document)) {
        const FieldType type = fieldTypeFromName(childText(control, QStringLiteral("type")));
        if (type != FieldType::Numeric && type != FieldType::Date)
            continue;
        QDomElement upper = control.cloneNode(true).toElement();
        const QString caption = childText(control, QStringLiteral("caption"));
        setChild(query.m_document, control, QStringLiteral("caption"),
                 caption + QStringLiteral(" from"), true);
        setChild(query.m_document, upper, QStringLiteral("caption"),
                 caption + QStringLiteral(" to"), true);
        control.parentNode().insertAfter(upper, control);
    }
    return query;
}

QString FormDocument::toText() const {
    return m_document.toString(2);
}

void FormDocument::save(const QString& path) const {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(toText().toUtf8()) < 0 || !file.commit())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
}

} // namespace vx::repo
