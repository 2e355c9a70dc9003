#pragma once

#include <QString>
#include <VXUILib/vxdata_export.h>

namespace vx {

// Values read from a repository row put into SQL text. Rows are data anyone with the
// repository's credentials can write, so a value never becomes structure.

// A text literal: between apostrophes, an apostrophe inside doubled. A null character (where
// the engines end a statement's text) is refused with vx::Error.
VXDATA_EXPORT QString sqlTextLiteral(const QString& text);

// "[name]". Brackets cannot hold "]" (nor, on the engines' side, a null character), so a name
// holding one, or a control character, is refused with vx::Error naming it.
VXDATA_EXPORT QString bracketedName(const QString& name);

} // namespace vx
