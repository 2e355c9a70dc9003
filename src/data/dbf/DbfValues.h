#pragma once

#include "data/dbf/DbfLayout.h"

#include <QVariant>

namespace vx::dbf {

// A value into its place in a blank record (`out` points at the field's first byte). Null leaves
// the field blank. Text longer than a character field is cut to its width, as the table keeps it;
// a number too wide for its field throws vx::Error. Memo fields are not written here.
void writeFieldValue(char* out, const FieldDescriptor& field, const QVariant& value);

// The value a record holds; null for a blank field. Memo fields give their block number.
QVariant readFieldValue(const char* record, const FieldDescriptor& field);

// A memo field's 4-byte block number.
void writeMemoBlock(char* out, quint32 block);
quint32 readMemoBlock(const char* field);

} // namespace vx::dbf
