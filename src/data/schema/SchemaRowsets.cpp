#include "data/schema/SchemaRowsets.h"

namespace vx {

namespace {

ColumnInfo column(const char* name, DataType type, qint32 size) {
    ColumnInfo info;
    info.name = QString::fromLatin1(name);
    info.type = type;
    info.definedSize = size;
    return info;
}

void appendTextOrNull(RowStore& rows, const QString& text) {
    if (text.isEmpty())
        rows.appendNull();
    else
        rows.appendText(text);
}

} // namespace

std::unique_ptr<RowStore> tablesRowset(const QList<TableEntry>& tables) {
    auto rows = std::make_unique<RowStore>(ColumnList{
        column("TABLE_CATALOG", DataType::VarWChar, 128),
        column("TABLE_SCHEMA", DataType::VarWChar, 128),
        column("TABLE_NAME", DataType::VarWChar, 128),
        column("TABLE_TYPE", DataType::VarWChar, 32),
        column("DESCRIPTION", DataType::VarWChar, 255),
    });
    rows->reserve(tables.size());
    for (const TableEntry& table : tables) {
        rows->appendNull();
        rows->appendNull();
        rows->appendText(table.name);
        rows->appendText(table.type);
        rows->appendNull();
        rows->endRow();
    }
    return rows;
}

std::unique_ptr<RowStore> providerTypesRowset(const QList<ProviderTypeEntry>& types) {
    auto rows = std::make_unique<RowStore>(ColumnList{
        column("TYPE_NAME", DataType::VarWChar, 32),
        column("DATA_TYPE", DataType::SmallInt, 2),
        column("COLUMN_SIZE", DataType::BigInt, 8),
        column("LITERAL_PREFIX", DataType::VarWChar, 16),
        column("LITERAL_SUFFIX", DataType::VarWChar, 16),
        column("IS_NULLABLE", DataType::Boolean, 2),
        column("CASE_SENSITIVE", DataType::Boolean, 2),
        column("BEST_MATCH", DataType::Boolean, 2),
    });
    rows->reserve(types.size());
    for (const ProviderTypeEntry& type : types) {
        rows->appendText(type.typeName);
        rows->appendInteger(int(type.dataType));
        rows->appendInteger(type.columnSize);
        appendTextOrNull(*rows, type.literalPrefix);
        appendTextOrNull(*rows, type.literalSuffix);
        rows->appendInteger(-1);
        rows->appendInteger(0); // text compares without regard to case
        rows->appendInteger(type.bestMatch ? -1 : 0);
        rows->endRow();
    }
    return rows;
}

} // namespace vx
