#include "data/DataType.h"

#include <QRegularExpression>

namespace vx {

StorageKind storageKindOf(DataType type) {
    switch (type) {
    case DataType::SmallInt:
    case DataType::Integer:
    case DataType::Boolean:
    case DataType::TinyInt:
    case DataType::UnsignedTinyInt:
    case DataType::BigInt:
        return StorageKind::Integer;
    case DataType::Single:
    case DataType::Double:
    case DataType::Currency:
    case DataType::Numeric:
        return StorageKind::Real;
    case DataType::Date:
    case DataType::DBTimeStamp:
        return StorageKind::DateTime;
    default:
        return StorageKind::Text;
    }
}

bool isTextType(DataType type) {
    switch (type) {
    case DataType::Char:
    case DataType::WChar:
    case DataType::VarChar:
    case DataType::LongVarChar:
    case DataType::VarWChar:
    case DataType::LongVarWChar:
        return true;
    default:
        return false;
    }
}

DeclaredType parseDeclaredType(const QString& declaration) {
    // "VARCHAR(50)", "TEXT (20)", "LONG", "DOUBLE PRECISION", "YESNO" ...
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*([A-Za-z_ ]*?)\s*(?:\(\s*(\d+)\s*(?:,\s*\d+\s*)?\))?\s*$)"));
    const auto match = pattern.match(declaration);
    const QString name = match.hasMatch() ? match.captured(1).toUpper().simplified()
                                          : declaration.toUpper().simplified();
    const qint32 size = match.hasMatch() && !match.captured(2).isEmpty()
                            ? match.captured(2).toInt()
                            : 0;
    DeclaredType result;
    auto fixed = [&](DataType type, qint32 bytes) {
        result.type = type;
        result.definedSize = bytes;
    };
    if (name == u"LONG" || name == u"INTEGER" || name == u"INT" || name == u"INT4")
        fixed(DataType::Integer, 4);
    else if (name == u"COUNTER" || name == u"AUTOINCREMENT" || name == u"IDENTITY") {
        fixed(DataType::Integer, 4);
        result.autoIncrement = true;
    } else if (name == u"SHORT" || name == u"SMALLINT" || name == u"INT2")
        fixed(DataType::SmallInt, 2);
    else if (name == u"BYTE" || name == u"TINYINT")
        fixed(DataType::UnsignedTinyInt, 1);
    else if (name == u"BIGINT" || name == u"INT8")
        fixed(DataType::BigInt, 8);
    else if (name == u"DOUBLE" || name == u"FLOAT" || name == u"DOUBLE PRECISION" ||
             name == u"REAL" || name == u"FLOAT8")
        fixed(DataType::Double, 8);
    else if (name == u"SINGLE" || name == u"FLOAT4")
        fixed(DataType::Single, 4);
    else if (name == u"CURRENCY" || name == u"MONEY")
        fixed(DataType::Currency, 8);
    else if (name == u"NUMERIC" || name == u"DECIMAL")
        fixed(DataType::Numeric, 19);
    else if (name == u"DATETIME" || name == u"DATE" || name == u"TIME")
        fixed(DataType::Date, 8);
    else if (name == u"TIMESTAMP")
        fixed(DataType::DBTimeStamp, 16);
    else if (name == u"BIT" || name == u"YESNO" || name == u"LOGICAL" || name == u"BOOLEAN")
        fixed(DataType::Boolean, 2);
    else if ((name == u"VARCHAR" || name == u"TEXT" || name == u"NVARCHAR" ||
              name == u"CHARACTER VARYING" || name == u"STRING") &&
             size > 0)
        fixed(DataType::VarWChar, size);
    else if ((name == u"CHAR" || name == u"NCHAR" || name == u"CHARACTER") && size > 0)
        fixed(DataType::WChar, size);
    else if (name == u"CHAR" || name == u"NCHAR" || name == u"CHARACTER")
        fixed(DataType::WChar, 1);
    else if (name == u"BINARY" || name == u"VARBINARY")
        fixed(DataType::Binary, size > 0 ? size : 510);
    else if (name == u"LONGBINARY" || name == u"BLOB" || name == u"OLEOBJECT" || name == u"IMAGE")
        fixed(DataType::LongVarBinary, 0);
    else if (name == u"GUID" || name == u"UNIQUEIDENTIFIER")
        fixed(DataType::Guid, 16);
    else
        fixed(DataType::LongVarWChar, 0); // LONGTEXT, MEMO, TEXT, NOTE and anything unknown
    return result;
}

} // namespace vx
