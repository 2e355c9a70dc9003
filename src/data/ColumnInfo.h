#pragma once

#include <QList>
#include <QString>
#include <VXUILib/FieldTypeCodes.h>

namespace vx {

/// What a result knows about one of its columns: name, type and size, and where it comes from.
struct ColumnInfo {
    /// The name the result gives the column ("table.column" when the name repeats).
    QString name;
    /// The column's type, taken from its declared type.
    DataType type = DataType::LongVarWChar;
    /// Characters for text columns, bytes for fixed-size types.
    qint32 definedSize = 0;
    /// The table the column is read from; empty for computed columns.
    QString baseTable;
    /// The column's name in its base table.
    QString baseColumn;
    /// Part of the base table's primary key.
    bool keyColumn = false;
    /// Filled in by the engine when a row is inserted.
    bool autoIncrement = false;
};

/// The columns of a result, in result order.
using ColumnList = QList<ColumnInfo>;

} // namespace vx
