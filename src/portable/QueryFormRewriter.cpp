#include "portable/QueryFormRewriter.h"

#include "data/Error.h"
#include "session/FormDefinition.h"
#include "session/ShownText.h"
#include "session/XmlShape.h"

#include <QDomDocument>
#include <QFile>
#include <QSaveFile>

namespace vx {

namespace {

void setText(QDomElement& element, const QString& text) {
    while (element.hasChildNodes())
        element.removeChild(element.firstChild());
    if (!text.isEmpty())
        element.appendChild(element.ownerDocument().createTextNode(text));
}

QString literalFor(const QString& type) {
    if (type == QLatin1String("DateField"))
        return QStringLiteral("#");
    if (type == QLatin1String("NumericField") || type == QLatin1String("CheckField"))
        return QString();
    return QStringLiteral("'");
}

// A node of "//controls/control": a control element directly inside a controls element.
QList<QDomElement> formControls(const QDomDocument& document) {
    QList<QDomElement> controls;
    const QDomNodeList all = document.elementsByTagName(QStringLiteral("control"));
    for (int i = 0; i < all.size(); ++i) {
        const QDomElement control = all.at(i).toElement();
        if (control.parentNode().nodeName() == QLatin1String("controls"))
            controls.append(control);
    }
    return controls;
}

} // namespace

QStringList rewriteQueryForm(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot read %1: %2").arg(path, file.errorString()));
    const QByteArray original = file.readAll();
    requireSafeXmlShape(original, path);
    QDomDocument document;
    QString parseError;
    int line = 0;
    if (!document.setContent(original, &parseError, &line))
        throw Error(ErrorNumber::Unspecified, QStringLiteral("%1 is not a valid form definition "
                                                             "(line %2: %3)")
                                                  .arg(path)
                                                  .arg(line)
                                                  .arg(parseError));
    file.close();

    const QDomElement root = document.documentElement();
    for (QDomElement link = root.firstChildElement(QStringLiteral("groupdatalink")); !link.isNull();
         link = link.nextSiblingElement(QStringLiteral("groupdatalink")))
        setText(link, QStringLiteral("veltrane.udl"));

    QStringList hintTables;
    // A control lacking one of these keeps the previous control's value.
    QString type;
    QString table;
    QString column;
    for (const QDomElement& control : formControls(document)) {
        for (QDomElement child = control.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement()) {
            const QString tag = child.tagName();
            const bool listField = type == QLatin1String("ListField");
            if (tag == QLatin1String("type")) {
                type = child.text();
            } else if (tag == QLatin1String("tablename")) {
                table = child.text();
            } else if (tag == QLatin1String("columnname")) {
                column = child.text();
            } else if (tag == QLatin1String("inittablename")) {
                if (listField) {
                    // The export reads and creates the hint table by these names.
                    for (const QString& name : {table, column})
                        if (!name.isEmpty() && !isPlainIdentifier(name))
                            throw Error(ErrorNumber::InvalidArgument,
                                        QStringLiteral("The query form %1 is refused: \"%2\" is "
                                                       "not a plain name (letters, digits and "
                                                       "\"_\").")
                                            .arg(path, shownText(name, 60)));
                    hintTables << table + column + QStringLiteral("Hints=") + column;
                } else
                    setText(child, table);
            } else if (tag == QLatin1String("initcolumnname")) {
                if (!listField)
                    setText(child, column);
            } else if (tag == QLatin1String("literalprefix") ||
                       tag == QLatin1String("literalsuffix")) {
                setText(child, literalFor(type));
            } else if (tag == QLatin1String("hintlisttype")) {
                if (type == QLatin1String("ComboField"))
                    setText(child, QStringLiteral("2"));
            }
        }
    }

    QSaveFile out(path);
    const QByteArray bytes = document.toByteArray(2);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write %1: %2").arg(path, out.errorString()));
    return hintTables;
}

} // namespace vx
