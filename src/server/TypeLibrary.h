#pragma once

#include <QString>

struct QMetaObject;

namespace vx {

// The library's type library in text, read from the meta-object system. A control lists its
// dispatch interface in order as class information:
//   Q_CLASSINFO("ClassName", "VXUILib.VXIndex")
//   Q_CLASSINFO("Interface", "Init;GroupInitString;UpdateRecordAPI;...")
//   Q_CLASSINFO("Events", "KeyDown")
// Properties print with get/put as the property can be read and written (a write-only property
// has a reader that only exists for the meta-object system and is marked by "WriteOnly").
QString typeLibraryText(const QMetaObject& control);
// One registered control by class name, with or without the "VXUILib." prefix; throws vx::Error
// naming the class when none is registered under it.
QString typeLibraryText(const QString& className);
// Every registered control, in class-name order.
QString typeLibraryText();

} // namespace vx
