#include "server/TypeLibrary.h"

#include "data/Error.h"
#include "server/ControlFactory.h"

#include <QMetaClassInfo>
#include <QMetaMethod>
#include <QMetaObject>
#include <QMetaProperty>
#include <QStringList>

namespace vx {

namespace {

QString classInfo(const QMetaObject& meta, const char* name) {
    const int index = meta.indexOfClassInfo(name);
    return index < 0 ? QString() : QString::fromLatin1(meta.classInfo(index).value());
}

QStringList listInfo(const QMetaObject& meta, const char* name) {
    QStringList items = classInfo(meta, name).split(u';', Qt::SkipEmptyParts);
    for (auto& item : items)
        item = item.trimmed();
    return items;
}

bool isWriteOnly(const QMetaObject& meta, const QString& property) {
    return listInfo(meta, "WriteOnly").contains(property);
}

QString signature(const QMetaMethod& method) {
    QStringList arguments;
    const auto names = method.parameterNames();
    const auto types = method.parameterTypes();
    for (int i = 0; i < method.parameterCount(); ++i)
        arguments << QStringLiteral("%1 %2").arg(QString::fromLatin1(types.value(i)),
                                                 QString::fromLatin1(names.value(i)));
    return QStringLiteral("%1(%2)").arg(QString::fromLatin1(method.name()), arguments.join(u", "));
}

QMetaMethod findMethod(const QMetaObject& meta, const QString& name, QMetaMethod::MethodType type) {
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() == type && QString::fromLatin1(method.name()) == name &&
            method.access() == QMetaMethod::Public)
            return method;
    }
    return {};
}

} // namespace

QString typeLibraryText(const QMetaObject& meta) {
    QStringList lines;
    const QString shortName =
        QString::fromLatin1(meta.className()).section(QStringLiteral("::"), -1);
    lines << QStringLiteral("%1 (%2)").arg(shortName, classInfo(meta, "ClassName"));
    lines << QStringLiteral("  dispatch interface _%1").arg(shortName);
    for (const QString& member : listInfo(meta, "Interface")) {
        const int propertyIndex = meta.indexOfProperty(member.toLatin1().constData());
        if (propertyIndex >= 0) {
            const QMetaProperty property = meta.property(propertyIndex);
            QStringList access;
            if (property.isReadable() && !isWriteOnly(meta, member))
                access << QStringLiteral("get");
            if (property.isWritable())
                access << QStringLiteral("put");
            lines << QStringLiteral("    property %1 %2 [%3]")
                         .arg(QString::fromLatin1(property.typeName()), member, access.join(u", "));
            continue;
        }
        const QMetaMethod method = findMethod(meta, member, QMetaMethod::Method);
        if (method.isValid()) {
            lines << QStringLiteral("    method %1 %2")
                         .arg(QString::fromLatin1(method.typeName()), signature(method));
            continue;
        }
        lines << QStringLiteral("    missing %1").arg(member);
    }
    lines << QStringLiteral("  events __%1").arg(shortName);
    for (const QString& event : listInfo(meta, "Events")) {
        const QMetaMethod method = findMethod(meta, event, QMetaMethod::Signal);
        lines << (method.isValid() ? QStringLiteral("    event %1").arg(signature(method))
                                   : QStringLiteral("    missing %1").arg(event));
    }
    return lines.join(u'\n') + u'\n';
}

QString typeLibraryText(const QString& className) {
    const QString fullName =
        className.contains(u'.') ? className : QStringLiteral("VXUILib.") + className;
    const QMetaObject* meta = ControlFactory::metaObjectOf(fullName);
    if (!meta)
        throw Error(
            ErrorNumber::NotSupported,
            QStringLiteral("No control of the class name \"%1\" is registered.").arg(className));
    return typeLibraryText(*meta);
}

QString typeLibraryText() {
    QString text;
    for (const QString& name : ControlFactory::classNames()) {
        if (const QMetaObject* meta = ControlFactory::metaObjectOf(name))
            text += typeLibraryText(*meta) + u'\n';
    }
    return text;
}

} // namespace vx
