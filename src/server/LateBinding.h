#pragma once

#include <QVariant>

class QObject;

namespace vx {

// Calls on a child control by member name, the way the controls reach each other: only through
// public members, and a missing member is an error rather than a silent no-op.
QVariant readMember(const QObject* object, const char* property);
void writeMember(QObject* object, const char* property, const QVariant& value);
// Invokes a method taking no arguments or one QString / QVariant; returns its result.
QVariant callMember(QObject* object, const char* method);
QVariant callMember(QObject* object, const char* method, const QVariant& argument);

} // namespace vx
