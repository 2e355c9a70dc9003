#pragma once

namespace vx {

/// Field types by their ADO type codes, which the controls test by number.
enum class DataType : int {
    Empty = 0,            ///< No value.
    SmallInt = 2,         ///< 16-bit integer (SHORT, SMALLINT).
    Integer = 3,          ///< 32-bit integer (LONG, INTEGER, COUNTER).
    Single = 4,           ///< Single-precision floating point.
    Double = 5,           ///< Double-precision floating point (DOUBLE).
    Currency = 6,         ///< Fixed-point currency (CURRENCY).
    Date = 7,             ///< Date and time (DATETIME).
    Boolean = 11,         ///< Yes/No, stored as -1 and 0 (BIT, YESNO).
    TinyInt = 16,         ///< 8-bit integer.
    UnsignedTinyInt = 17, ///< Unsigned 8-bit integer.
    BigInt = 20,          ///< 64-bit integer.
    Guid = 72,            ///< Globally unique identifier.
    Binary = 128,         ///< Fixed-size bytes.
    Char = 129,           ///< Fixed-length narrow text.
    WChar = 130,          ///< Fixed-length text (CHAR(n)).
    Numeric = 131,        ///< Exact decimal number.
    DBTimeStamp = 135,    ///< Date and time stamp (TIMESTAMP).
    VarChar = 200,        ///< Variable-length narrow text.
    LongVarChar = 201,    ///< Long narrow text.
    VarWChar = 202,       ///< Variable-length text with a defined size (VARCHAR(n), TEXT(n)).
    LongVarWChar = 203,   ///< Long text without a size (LONGTEXT, MEMO).
    LongVarBinary = 205,  ///< Long bytes (BLOB).
};

} // namespace vx
