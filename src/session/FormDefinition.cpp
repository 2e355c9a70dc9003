#include "session/FormDefinition.h"

#include "data/Error.h"
#include "session/LibraryState.h"
#include "session/UiServices.h"
#include "session/XmlShape.h"

#include <QDateTime>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QHash>

namespace vx {

bool isPlainIdentifier(const QString& name) {
    if (name.isEmpty() || name.size() > 128 || name.front().isDigit())
        return false;
    for (const QChar c : name) {
        if (!(c.isLetterOrNumber() || c == u'_') || c.unicode() > 0x7f)
            return false;
    }
    return true;
}
namespace {

QString elementText(const QDomElement& element) {
    return element.text().trimmed();
}

// Source: a QByteArray (bytes, the declared encoding honoured) or a QString (text).
template <typename Source>
QDomDocument parse(const Source& source, const QString& name) {
    requireSafeXmlShape(source, name);
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(source, &message, &line, &column))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The form definition \"%1\" is not well-formed: %2 (line %3, "
                                   "column %4).")
                        .arg(name, message)
                        .arg(line)
                        .arg(column));
    return document;
}

QDomDocument parseFile(const QString& path) {
    QFile file(path);
    if (path.isEmpty() || !QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The form definition \"%1\" cannot be opened: %2")
                        .arg(QDir::toNativeSeparators(path),
                             path.isEmpty() ? QStringLiteral("no file was named.")
                                            : QStringLiteral("the file does not exist or cannot "
                                                             "be read.")));
    return parse(file.readAll(), QDir::toNativeSeparators(path));
}

// A parsed file and the element texts asked for so far, by tag.
struct CachedForm {
    QDomDocument document;
    QDateTime modified;
    qint64 size = -1;
    QHash<QString, QStringList> textsByTag;

    const QStringList& texts(const QString& tag) {
        auto found = textsByTag.find(tag);
        if (found == textsByTag.end()) {
            QStringList texts;
            const QDomNodeList nodes = document.elementsByTagName(tag);
            for (int i = 0; i < nodes.size(); ++i)
                texts.append(elementText(nodes.at(i).toElement()));
            found = textsByTag.insert(tag, texts);
        }
        return *found;
    }
};

QHash<QString, CachedForm>& cache() {
    thread_local QHash<QString, CachedForm> forms;
    return forms;
}

// The parsed file, read again when it changed on disk since it was cached.
CachedForm& cachedForm(const QString& path) {
    const QFileInfo info(path);
    auto found = cache().find(path);
    if (found != cache().end() && info.exists() && found->modified == info.lastModified() &&
        found->size == info.size())
        return *found;
    CachedForm form;
    form.document = parseFile(path);
    form.modified = info.lastModified();
    form.size = info.size();
    return *cache().insert(path, std::move(form));
}

} // namespace

QString GetControlValuesFromXML(const QString& matchTag, const QString& matchValue,
                                const QString& wantTag) {
    try {
        CachedForm& form = cachedForm(library().formDefinitionPath);
        const QStringList matches = form.texts(matchTag.toLower());
        const QStringList wanted = form.texts(wantTag.toLower());
        const QString value = matchValue.toLower();
        for (qsizetype i = 0; i < matches.size(); ++i) {
            if (matches[i].toLower() != value)
                continue;
            // With unequal counts the lists cannot be paired, so the first wanted element answers
            // for every control; form definitions give each control every element to avoid this.
            if (wanted.size() == matches.size())
                return wanted[i];
            return wanted.isEmpty() ? QString() : wanted.front();
        }
        return QStringLiteral("Not Found");
    } catch (const Error& error) {
        cache().remove(library().formDefinitionPath);
        ui().messageBox(error.description(), MessageStyle::Critical | MessageStyle::OkOnly,
                        QStringLiteral("GetControlValuesFromXML"));
        return {};
    }
}

void clearFormDefinitionCache() {
    cache().clear();
}

QString FormControl::value(const QString& tag) const {
    for (const auto& [name, text] : elements) {
        if (name.compare(tag, Qt::CaseInsensitive) == 0)
            return text;
    }
    return {};
}

struct FormDefinition::Private {
    QList<FormControl> controls;
};

FormDefinition::FormDefinition()
    : d(std::make_unique<Private>()) {}
FormDefinition::~FormDefinition() = default;
FormDefinition::FormDefinition(FormDefinition&&) noexcept = default;
FormDefinition& FormDefinition::operator=(FormDefinition&&) noexcept = default;

namespace {

void collectControls(const QDomDocument& document, QList<FormControl>& controls) {
    const QDomNodeList nodes = document.elementsByTagName(QStringLiteral("control"));
    for (int i = 0; i < nodes.size(); ++i) {
        const QDomElement element = nodes.at(i).toElement();
        if (element.parentNode().nodeName() != u"controls")
            continue;
        FormControl control;
        for (QDomElement child = element.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement())
            control.elements.append({child.tagName(), elementText(child)});
        control.type = control.value(QStringLiteral("type"));
        control.caption = control.value(QStringLiteral("caption"));
        control.columnName = control.value(QStringLiteral("columnname"));
        control.tableName = control.value(QStringLiteral("tablename"));
        control.allowUpdate = control.value(QStringLiteral("allowupdate"));
        control.initTableName = control.value(QStringLiteral("inittablename"));
        control.initColumnName = control.value(QStringLiteral("initcolumnname"));
        control.literalPrefix = control.value(QStringLiteral("literalprefix"));
        control.literalSuffix = control.value(QStringLiteral("literalsuffix"));
        control.hintListType = control.value(QStringLiteral("hintlisttype"));
        controls.append(std::move(control));
    }
}

} // namespace

FormDefinition FormDefinition::load(const QString& path) {
    FormDefinition definition;
    collectControls(parseFile(path), definition.d->controls);
    return definition;
}

FormDefinition FormDefinition::fromText(const QString& xml) {
    FormDefinition definition;
    collectControls(parse(xml, QStringLiteral("(text)")), definition.d->controls);
    return definition;
}

const QList<FormControl>& FormDefinition::controls() const {
    static const QList<FormControl> none; // a moved-from definition
    return d ? d->controls : none;
}

const FormControl* FormDefinition::controlForColumn(const QString& columnName) const {
    for (const FormControl& control : controls()) {
        if (control.columnName.compare(columnName, Qt::CaseInsensitive) == 0)
            return &control;
    }
    return nullptr;
}

} // namespace vx
