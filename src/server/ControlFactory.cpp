#include "server/ControlFactory.h"

#include "data/Error.h"

#include <QHash>
#include <QMetaObject>
#include <QWidget>

namespace vx {

namespace {

struct Registration {
    const QMetaObject* metaObject = nullptr;
    ControlFactory::Creator creator;
};

// Class names compare without regard to case, as the platform's class registry does.
QHash<QString, Registration>& registry() {
    static QHash<QString, Registration> classes;
    return classes;
}

QHash<QString, QString>& spellings() {
    static QHash<QString, QString> names;
    return names;
}

} // namespace

void ControlFactory::registerControl(const QString& className, const QMetaObject* metaObject,
                                     Creator creator) {
    const QString key = className.toLower();
    registry().insert(key, Registration{metaObject, std::move(creator)});
    spellings().insert(key, className);
}

QWidget* ControlFactory::create(const QString& className, QWidget* parent) {
    registerLibraryControls();
    const auto found = registry().constFind(className.toLower());
    if (found == registry().constEnd())
        throw Error(ErrorNumber::NotSupported,
                    QStringLiteral("Cannot create the control \"%1\": no control of that class "
                                   "name is registered.")
                        .arg(className));
    QWidget* control = found->creator(parent);
    if (!control)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The control \"%1\" could not be created.").arg(className));
    return control;
}

bool ControlFactory::contains(const QString& className) {
    registerLibraryControls();
    return registry().contains(className.toLower());
}

QStringList ControlFactory::classNames() {
    registerLibraryControls();
    QStringList names = spellings().values();
    names.sort(Qt::CaseInsensitive);
    return names;
}

const QMetaObject* ControlFactory::metaObjectOf(const QString& className) {
    registerLibraryControls();
    const auto found = registry().constFind(className.toLower());
    return found == registry().constEnd() ? nullptr : found->metaObject;
}

} // namespace vx
