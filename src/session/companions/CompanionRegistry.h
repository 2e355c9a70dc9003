#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <VXUILib/Error.h>
#include <VXUILib/vxuilib_export.h>
#include <functional>
#include <memory>

class QWidget;

namespace vx {

class VXDynaForm;

/// The registered class names of the companion components.
namespace CompanionClass {
/// The dynamic form (VXDynaForm).
inline const QString DynaForm = QStringLiteral("VXDynaForm.VXDynaForm");
/// The indexing API (VXScanIndex).
inline const QString ScanIndex = QStringLiteral("VXIntegrate.VXScanIndex");
/// The item list of the indexing API (VXItemList).
inline const QString ItemList = QStringLiteral("VXIntegrate.VXItemList");
/// The document-security manager (VXSecurity).
inline const QString Security = QStringLiteral("VXAdmin.VXSecurity");
/// The query parser (VXSQLQuery).
inline const QString SqlQuery = QStringLiteral("VXQueryParser.VXSQLQuery");
} // namespace CompanionClass

/// The number of the error raised when no implementation is registered under a class name.
inline constexpr qint32 CannotCreateObject = 429;

/// Makes a new companion object; the caller owns it.
using CompanionFactory = std::function<std::unique_ptr<QObject>()>;

/// Registers the implementation behind a class name, replacing any earlier one. Class names are
/// matched without regard to case. An empty factory removes the name.
VXUILIB_EXPORT void registerCompanion(const QString& className, CompanionFactory factory);
/// The factory registered under a name; empty when none (lets a caller restore it later).
VXUILIB_EXPORT CompanionFactory companionFactory(const QString& className);
/// The class names registered, in no particular order.
VXUILIB_EXPORT QStringList registeredCompanions();

/// A new object of the registered class; throws vx::Error naming the class when none is
/// registered or the factory made nothing.
VXUILIB_EXPORT std::unique_ptr<QObject> createCompanion(const QString& className);

/// The same, checked to implement T; throws vx::Error when it does not.
template <class T>
std::unique_ptr<T> createCompanion(const QString& className) {
    std::unique_ptr<QObject> object = createCompanion(className);
    if (!qobject_cast<T*>(object.get()))
        throw Error(CannotCreateObject,
                    QStringLiteral("The component registered as \"%1\" is not a %2.")
                        .arg(className, QString::fromLatin1(T::staticMetaObject.className())));
    return std::unique_ptr<T>(static_cast<T*>(object.release()));
}

/// The dynamic form, created as the child named "Group" of `parent` (which owns it).
VXUILIB_EXPORT VXDynaForm* createDynaForm(QWidget* parent);

/// Registers a factory for its lifetime and restores what was registered before (tests, hosts
/// that swap an implementation for one window).
class VXUILIB_EXPORT CompanionOverride {
public:
    /// Registers `factory` under `className`, remembering what was registered before.
    CompanionOverride(const QString& className, CompanionFactory factory);
    /// Restores the earlier registration (or removes the name when there was none).
    ~CompanionOverride();
    CompanionOverride(const CompanionOverride&) = delete;
    CompanionOverride& operator=(const CompanionOverride&) = delete;

private:
    QString m_className;
    CompanionFactory m_previous;
};

} // namespace vx
