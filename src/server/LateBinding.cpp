#include "server/LateBinding.h"

#include "data/Error.h"

#include <QMetaMethod>
#include <QMetaObject>
#include <QMetaProperty>
#include <QObject>

namespace vx {

namespace {

[[noreturn]] void missingMember(const QObject* object, const char* member) {
    throw Error(ErrorNumber::NotSupported,
                QStringLiteral("Object doesn't support this property or method: %1.%2")
                    .arg(QString::fromLatin1(object ? object->metaObject()->className() : "null"),
                         QString::fromLatin1(member)));
}

QMetaProperty propertyOf(const QObject* object, const char* name) {
    if (!object)
        missingMember(object, name);
    const int index = object->metaObject()->indexOfProperty(name);
    if (index < 0)
        missingMember(object, name);
    return object->metaObject()->property(index);
}

QMetaMethod methodOf(const QObject* object, const char* name, int argumentCount) {
    if (!object)
        missingMember(object, name);
    const QMetaObject* meta = object->metaObject();
    for (int i = meta->methodCount() - 1; i >= 0; --i) {
        const QMetaMethod method = meta->method(i);
        if (method.name() == name && method.parameterCount() == argumentCount)
            return method;
    }
    missingMember(object, name);
}

QVariant returnHolder(const QMetaMethod& method) {
    if (method.returnType() == QMetaType::Void)
        return {};
    return QVariant(QMetaType(method.returnType()));
}

} // namespace

QVariant readMember(const QObject* object, const char* property) {
    return propertyOf(object, property).read(object);
}

void writeMember(QObject* object, const char* property, const QVariant& value) {
    const QMetaProperty meta = propertyOf(object, property);
    if (!meta.write(object, value))
        throw Error(ErrorNumber::TypeMismatch,
                    QStringLiteral("Type mismatch writing %1").arg(QString::fromLatin1(property)));
}

QVariant callMember(QObject* object, const char* method) {
    const QMetaMethod meta = methodOf(object, method, 0);
    QVariant result = returnHolder(meta);
    const bool ok = result.isValid()
                        ? meta.invoke(object, Qt::DirectConnection,
                                      QGenericReturnArgument(meta.typeName(), result.data()))
                        : meta.invoke(object, Qt::DirectConnection);
    if (!ok)
        missingMember(object, method);
    return result;
}

QVariant callMember(QObject* object, const char* method, const QVariant& argument) {
    const QMetaMethod meta = methodOf(object, method, 1);
    QVariant converted = argument;
    const QMetaType parameterType(meta.parameterType(0));
    if (meta.parameterType(0) != QMetaType::QVariant && !converted.convert(parameterType))
        throw Error(ErrorNumber::TypeMismatch,
                    QStringLiteral("Type mismatch calling %1").arg(QString::fromLatin1(method)));
    QVariant result = returnHolder(meta);
    const QGenericArgument parameter(meta.parameterType(0) == QMetaType::QVariant
                                         ? "QVariant"
                                         : parameterType.name(),
                                     meta.parameterType(0) == QMetaType::QVariant
                                         ? static_cast<const void*>(&argument)
                                         : converted.constData());
    const bool ok =
        result.isValid()
            ? meta.invoke(object, Qt::DirectConnection,
                          QGenericReturnArgument(meta.typeName(), result.data()), parameter)
            : meta.invoke(object, Qt::DirectConnection, parameter);
    if (!ok)
        missingMember(object, method);
    return result;
}

} // namespace vx
