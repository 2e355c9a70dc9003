#pragma once

#include <QStringList>
#include <VXUILib/vxuilib_export.h>
#include <functional>

class QWidget;
struct QMetaObject;

namespace vx {

/// Creates the library's controls by class name ("VXUILib.VXKeywords" ...), as hosts and the
/// controls themselves do for their children. One registration point for everyone.
class VXUILIB_EXPORT ControlFactory {
public:
    /// Makes a new control with the given parent.
    using Creator = std::function<QWidget*(QWidget* parent)>;

    /// Registers (or replaces) a control class: its meta-object describes its members, the
    /// creator makes instances.
    static void registerControl(const QString& className, const QMetaObject* metaObject,
                                Creator creator);
    /// A new control of the registered class, owned by `parent`; throws vx::Error naming the
    /// class when it is unknown.
    static QWidget* create(const QString& className, QWidget* parent = nullptr);
    /// True when a class of that name is registered.
    static bool contains(const QString& className);
    /// The registered class names.
    static QStringList classNames();
    /// The meta-object of a registered class (its properties, methods and events); null when
    /// the class is unknown.
    static const QMetaObject* metaObjectOf(const QString& className);

    /// Registers a QWidget subclass whose constructor takes the parent widget.
    template <typename Control>
    static void registerControl(const QString& className) {
        registerControl(className, &Control::staticMetaObject,
                        [](QWidget* parent) -> QWidget* { return new Control(parent); });
    }
};

/// Registers the library's seven controls; idempotent. Hosts call it once before creating
/// controls by name (the library calls it itself for its children).
VXUILIB_EXPORT void registerLibraryControls();

} // namespace vx
