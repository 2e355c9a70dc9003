#include "session/companions/CompanionRegistry.h"

#include "session/companions/VXDynaForm.h"

#include <QHash>
#include <QWidget>

namespace vx {

namespace {

struct Registration {
    QString className; // as first registered, for listing
    CompanionFactory factory;
};

// Hosts register at start-up on their user-interface thread; all calls arrive there.
QHash<QString, Registration>& registrations() {
    static QHash<QString, Registration> table;
    return table;
}

QString keyOf(const QString& className) {
    return className.trimmed().toLower();
}

} // namespace

void registerCompanion(const QString& className, CompanionFactory factory) {
    const QString key = keyOf(className);
    if (!factory) {
        registrations().remove(key);
        return;
    }
    registrations().insert(key, Registration{className.trimmed(), std::move(factory)});
}

CompanionFactory companionFactory(const QString& className) {
    const auto found = registrations().constFind(keyOf(className));
    return found == registrations().cend() ? CompanionFactory{} : found->factory;
}

QStringList registeredCompanions() {
    QStringList names;
    for (const Registration& registration : std::as_const(registrations()))
        names << registration.className;
    names.sort(Qt::CaseInsensitive);
    return names;
}

std::unique_ptr<QObject> createCompanion(const QString& className) {
    const CompanionFactory factory = companionFactory(className);
    if (!factory)
        throw Error(CannotCreateObject,
                    QStringLiteral("Cannot create the component \"%1\": no class of that name "
                                   "is registered.")
                        .arg(className));
    std::unique_ptr<QObject> object = factory();
    if (!object)
        throw Error(CannotCreateObject,
                    QStringLiteral("Cannot create the component \"%1\": its factory made no "
                                   "object.")
                        .arg(className));
    return object;
}

VXDynaForm* createDynaForm(QWidget* parent) {
    std::unique_ptr<VXDynaForm> form = createCompanion<VXDynaForm>(CompanionClass::DynaForm);
    form->setObjectName(QStringLiteral("Group"));
    form->setParent(parent);
    return form.release(); // owned by parent from here
}

CompanionOverride::CompanionOverride(const QString& className, CompanionFactory factory)
    : m_className(className)
    , m_previous(companionFactory(className)) {
    registerCompanion(className, std::move(factory));
}

CompanionOverride::~CompanionOverride() {
    registerCompanion(m_className, std::move(m_previous));
}

} // namespace vx
