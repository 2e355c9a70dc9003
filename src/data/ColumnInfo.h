#pragma once

#include <QList>
#include <QString>
#include <VXUILib/FieldTypeCodes.h>

namespace vx {

// What a result knows about one of its columns.
struct ColumnInfo {
    QString name; // as the result names it ("table.column" when the name repeats)
    DataType type = DataType::LongVarWChar;
    qint32 definedSize = 0; // characters for text, bytes for fixed-size types
    QString baseTable;      // empty for computed columns
    QString baseColumn;
    bool keyColumn = false;     // part of the base table's primary key
    bool autoIncrement = false; // filled in by the engine on insert
};

using ColumnList = QList<ColumnInfo>;

} // namespace vx
