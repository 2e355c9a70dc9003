#pragma once

#include <QString>

namespace vx {

// Field types by their ADO type codes, which the controls test by number.
enum class DataType : int {
    Empty = 0,
    SmallInt = 2,
    Integer = 3,
    Single = 4,
    Double = 5,
    Currency = 6,
    Date = 7,
    Boolean = 11,
    TinyInt = 16,
    UnsignedTinyInt = 17,
    BigInt = 20,
    Guid = 72,
    Binary = 128,
    Char = 129,
    WChar = 130,
    Numeric = 131,
    DBTimeStamp = 135,
    VarChar = 200,
    LongVarChar = 201,
    VarWChar = 202,
    LongVarWChar = 203,
    LongVarBinary = 205,
};

// How a column's values are held in a materialised result.
enum class StorageKind { Integer, Real, Text, DateTime };

StorageKind storageKindOf(DataType type);
bool isTextType(DataType type);

// The type and defined size a declared column type ("VARCHAR(50)", "LONG", "YESNO", ...) stands
// for, as the embedded engine reports them. Unknown declarations are long text.
struct DeclaredType {
    DataType type = DataType::LongVarWChar;
    qint32 definedSize = 0;
    bool autoIncrement = false;
};
DeclaredType parseDeclaredType(const QString& declaration);

} // namespace vx
