#pragma once

#include <QString>
#include <VXUILib/FieldTypeCodes.h>
#include <VXUILib/vxdata_export.h>

namespace vx {

// How a column's values are held in a materialised result.
enum class StorageKind { Integer, Real, Text, DateTime };

StorageKind storageKindOf(DataType type);
VXDATA_EXPORT bool isTextType(DataType type);

// The type and defined size a declared column type ("VARCHAR(50)", "LONG", "YESNO", ...) stands
// for, as the embedded engine reports them. Unknown declarations are long text.
struct DeclaredType {
    DataType type = DataType::LongVarWChar;
    qint32 definedSize = 0;
    bool autoIncrement = false;
};
DeclaredType parseDeclaredType(const QString& declaration);

} // namespace vx
