#pragma once

#include <QStringList>
#include <VXUILib/vxuilib_export.h>
#include <functional>

class QWidget;
struct QMetaObject;

namespace vx {

// Creates the library's controls by class name ("VXUILib.VXKeywords" ...), as hosts and the
// controls themselves do for their children. One registration point for everyone.
class VXUILIB_EXPORT ControlFactory {
public:
    using Creator = std::function<QWidget*(QWidget* parent)>;

    // Registers (or replaces) a control class.
    static void registerControl(const QString& className, const QMetaObject* metaObject,
                                Creator creator);
    // Throws vx::Error naming the class when it is unknown.
    static QWidget* create(const QString& className, QWidget* parent = nullptr);
    static bool contains(const QString& className);
    static QStringList classNames();
    static const QMetaObject* metaObjectOf(const QString& className);

    template <typename Control>
    static void registerControl(const QString& className) {
        registerControl(className, &Control::staticMetaObject,
                        [](QWidget* parent) -> QWidget* { return new Control(parent); });
    }
};

// Registers the library's seven controls; idempotent. Hosts call it once before creating
// controls by name (the library calls it itself for its children).
VXUILIB_EXPORT void registerLibraryControls();

} // namespace vx
