#pragma once

#include "session/Schema.h"

#include <QString>

namespace vx::repo {

// One index field of a group's form, as the tool reads and writes form definitions.
struct FormField {
    QString caption;
    QString columnName;
    FieldType type = FieldType::Unknown;
    bool allowUpdate = false; // a combo's pick list may be edited (it gets a hint table)
    int length = 0;           // characters of an edit or combo column; 0 takes the default
    bool required = false;
    int width = 0; // editor width in pixels for form renderers; 0 takes the type's default
};

// Text columns are VARCHAR, whose engines cap at 255 characters.
inline constexpr int DefaultTextLength = 50;
inline constexpr int MaximumTextLength = 255;

// The characters a field's column holds: the given length or the default for edits and combos,
// the maximum for lists (entries joined by ';'), 0 for the other types.
int columnLength(const FormField& field);

// The declared type of the field's column in the group table: "LONGTEXT", "VARCHAR(50)", "LONG",
// "YESNO", "DATETIME".
QString columnDeclaration(const FormField& field);

// Only updatable combos keep their pick list in a table of their own.
bool hasHintTable(const FormField& field);

// Editor width used when a definition gives none.
int defaultWidth(FieldType type);

// Throws vx::Error naming the field when its column name or type cannot make a table column.
void validateField(const FormField& field, const QString& formName);

// Names that become tables and columns: a letter, then letters, digits or '_'. Anything else
// would need quoting that some statements of the library do not apply.
bool isPlainName(const QString& name);

} // namespace vx::repo
