#pragma once

#include <QByteArray>
#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// Form definitions are small and flat. Before a document is built from one, a streaming pass
// refuses what would exhaust the stack or memory of the document builder: elements nested
// deeper than MaxXmlDepth, and entities declared in the document itself (their expansion can
// grow without bound). Throws vx::Error naming the file; `name` is how the message calls it.
inline constexpr int MaxXmlDepth = 256;
void requireSafeXmlShape(const QByteArray& bytes, const QString& name);
// The default companions check the form text they read; the only use beyond this library.
VXUILIB_EXPORT void requireSafeXmlShape(const QString& text, const QString& name);

} // namespace vx
