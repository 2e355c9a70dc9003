#include "data/postgres/PostgresResultReader.h"

#include "data/dialect/SqlLexer.h"
#include "data/postgres/PostgresBinaryCells.h"
#include "data/postgres/PostgresCatalog.h"

#include <QHash>
#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <vector>

namespace vx::postgres {

namespace {

// How the cells of one column are read from their text.
enum class CellKind { Integer, Boolean, Real, DateTime, TimeOfDay, Text, Binary };

struct ColumnReading {
    ColumnInfo info;
    CellKind kind = CellKind::Text;
};

// Numeric's type modifier packs precision and scale.
bool isCurrencyShape(int modifier) {
    if (modifier < 4)
        return false;
    const int packed = modifier - 4;
    return ((packed >> 16) & 0xffff) == 19 && (packed & 0xffff) == 4;
}

ColumnReading describe(Oid type, int modifier, const CatalogColumn* column) {
    ColumnReading reading;
    ColumnInfo& info = reading.info;
    auto set = [&](DataType dataType, qint32 size, CellKind kind) {
        info.type = dataType;
        info.definedSize = size;
        reading.kind = kind;
    };
    switch (type) {
    case TypeOid::Bool:
        set(DataType::Boolean, 2, CellKind::Boolean);
        break;
    case TypeOid::Int2:
        if (column && column->yesNo)
            set(DataType::Boolean, 2, CellKind::Integer);
        else
            set(DataType::SmallInt, 2, CellKind::Integer);
        break;
    case TypeOid::Int4:
        set(DataType::Integer, 4, CellKind::Integer);
        break;
    case TypeOid::Int8:
    case TypeOid::ObjectId:
        set(DataType::BigInt, 8, CellKind::Integer);
        break;
    case TypeOid::Float4:
        set(DataType::Single, 4, CellKind::Real);
        break;
    case TypeOid::Float8:
        set(DataType::Double, 8, CellKind::Real);
        break;
    case TypeOid::Numeric:
        // The dialect declares currency columns numeric(19,4).
        if (isCurrencyShape(modifier))
            set(DataType::Currency, 8, CellKind::Real);
        else
            set(DataType::Numeric, 19, CellKind::Real);
        break;
    case TypeOid::Date:
    case TypeOid::Timestamp:
    case TypeOid::TimestampTz:
        set(DataType::Date, 8, CellKind::DateTime);
        break;
    case TypeOid::Time:
        set(DataType::Date, 8, CellKind::TimeOfDay);
        break;
    case TypeOid::VarChar:
        if (modifier >= 4)
            set(DataType::VarWChar, modifier - 4, CellKind::Text);
        else
            set(DataType::LongVarWChar, 0, CellKind::Text);
        break;
    case TypeOid::BpChar:
        if (modifier >= 4)
            set(DataType::WChar, modifier - 4, CellKind::Text);
        else
            set(DataType::LongVarWChar, 0, CellKind::Text);
        break;
    case TypeOid::Char:
        set(DataType::WChar, 1, CellKind::Text);
        break;
    case TypeOid::Name:
        set(DataType::VarWChar, 63, CellKind::Text);
        break;
    case TypeOid::Uuid:
        set(DataType::Guid, 16, CellKind::Text);
        break;
    case TypeOid::Bytea:
        set(DataType::LongVarBinary, 0, CellKind::Binary);
        break;
    default: // text, unknown literals and everything else reads as long text
        set(DataType::LongVarWChar, 0, CellKind::Text);
    }
    return reading;
}

// The table as the query spells it ("ktitem" for KTItem), for repeated column names.
QString spellingInQuery(const dialect::SqlTokens& tokens, const QString& table) {
    for (const auto& token : tokens) {
        if (token.isName() && token.name().compare(table, Qt::CaseInsensitive) == 0)
            return token.name();
    }
    return table;
}

void nameRepeatedColumns(std::vector<ColumnReading>& columns, const QString& sql) {
    QHash<QString, int> counts;
    for (const auto& column : columns)
        ++counts[column.info.name.toLower()];
    dialect::SqlTokens tokens;
    for (auto& column : columns) {
        ColumnInfo& info = column.info;
        if (counts.value(info.name.toLower()) < 2 || info.baseTable.isEmpty())
            continue;
        if (tokens.empty())
            tokens = dialect::tokenize(sql);
        info.name = spellingInQuery(tokens, info.baseTable) + u'.' + info.name;
    }
}

bool parseInteger(const char* text, int size, qint64& value) {
    return std::from_chars(text, text + size, value).ec == std::errc();
}

// Whether every value of a computed 64-bit column fits 32 bits.
bool fitsInteger(const PGresult* result, int column) {
    for (int row = 0, rows = PQntuples(result); row < rows; ++row) {
        if (PQgetisnull(result, row, column))
            continue;
        qint64 value = 0;
        if (!parseInteger(PQgetvalue(result, row, column), PQgetlength(result, row, column),
                          value) ||
            value < std::numeric_limits<qint32>::min() ||
            value > std::numeric_limits<qint32>::max())
            return false;
    }
    return true;
}

// Numbers in the server's text form, independent of the process locale; "NaN", "Infinity"
// and "-Infinity" included.
bool parseReal(const char* text, int size, double& value) {
    const auto [end, error] = std::from_chars(text, text + size, value);
    return error == std::errc() && end == text + size;
}

// A time of day lies on the zero day, as the old engine keeps it.
bool parseTimeOfDay(const char* text, int size, qint64& packed) {
    static const char zeroDay[] = "1899-12-30 ";
    constexpr int prefix = sizeof(zeroDay) - 1;
    char buffer[48];
    if (size > int(sizeof(buffer)) - prefix)
        return false;
    std::memcpy(buffer, zeroDay, prefix);
    std::memcpy(buffer + prefix, text, size_t(size));
    return parseStoredDateTime(buffer, prefix + size, packed);
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// bytea in the server's hex output form, "\x0a1b...".
QByteArray decodeBytea(const char* text, int size) {
    QByteArray bytes;
    if (size < 2 || text[0] != '\\' || text[1] != 'x')
        return QByteArray(text, size);
    bytes.reserve((size - 2) / 2);
    for (int i = 2; i + 1 < size; i += 2)
        bytes.append(char(hexValue(text[i]) * 16 + hexValue(text[i + 1])));
    return bytes;
}

void appendCell(RowStore& rows, CellKind kind, const char* text, int size) {
    switch (kind) {
    case CellKind::Integer: {
        qint64 value = 0;
        if (parseInteger(text, size, value))
            rows.appendInteger(value);
        else
            rows.appendNull();
        break;
    }
    case CellKind::Boolean:
        rows.appendInteger(text[0] == 't' ? -1 : 0);
        break;
    case CellKind::Real: {
        double value = 0;
        if (parseReal(text, size, value))
            rows.appendReal(value);
        else
            rows.appendNull();
        break;
    }
    case CellKind::DateTime:
    case CellKind::TimeOfDay: {
        qint64 packed = 0;
        const bool parsed = kind == CellKind::DateTime ? parseStoredDateTime(text, size, packed)
                                                       : parseTimeOfDay(text, size, packed);
        // "infinity" and dates before the common era have no place in the store
        if (parsed)
            rows.appendDateTime(packed);
        else
            rows.appendNull();
        break;
    }
    case CellKind::Text:
        rows.appendText(text, size);
        break;
    case CellKind::Binary: {
        const QByteArray bytes = decodeBytea(text, size);
        rows.appendText(bytes.constData(), bytes.size());
        break;
    }
    }
}

} // namespace

ResultDecoder::ResultDecoder(const PGresult* result, Catalog& catalog, const QString& sql,
                             bool fitCheck) {
    const int columnCount = PQnfields(result);
    std::vector<Oid> tables;
    for (int i = 0; i < columnCount; ++i)
        tables.push_back(PQftable(result, i));
    catalog.load(tables);

    std::vector<ColumnReading> columns;
    columns.reserve(size_t(columnCount));
    for (int i = 0; i < columnCount; ++i) {
        const CatalogTable* table = catalog.table(PQftable(result, i));
        const CatalogColumn* column = table ? table->column(PQftablecol(result, i)) : nullptr;
        ColumnReading reading = describe(PQftype(result, i), PQfmod(result, i), column);
        ColumnInfo& info = reading.info;
        info.name = QString::fromUtf8(PQfname(result, i));
        if (column) {
            // An unaliased column shows the name the repository declared.
            if (info.name == column->name)
                info.name = column->displayName;
            info.baseTable = table->displayName;
            info.baseColumn = column->displayName;
            info.keyColumn = column->key;
            info.autoIncrement = column->autoIncrement;
        }
        if (fitCheck && !column && info.type == DataType::BigInt && fitsInteger(result, i)) {
            // COUNT(*) and SUM(...) read as 32-bit integers, as on the embedded engine.
            info.type = DataType::Integer;
            info.definedSize = 4;
        }
        columns.push_back(std::move(reading));
        m_types.push_back(PQftype(result, i));
    }
    nameRepeatedColumns(columns, sql);

    m_columns.reserve(columnCount);
    for (const auto& column : columns) {
        m_columns.append(column.info);
        m_kinds.push_back(int(column.kind));
    }
    m_binary = postgres::readsBinary(m_types);
}

ResultDecoder::~ResultDecoder() = default;

void ResultDecoder::append(RowStore& rows, const PGresult* result, int first, int count) const {
    const int columnCount = int(m_kinds.size());
    const int end = count < 0 ? PQntuples(result) : std::min(PQntuples(result), first + count);
    rows.reserve(rows.rowCount() + std::max(0, end - first));
    if (columnCount > 0 && PQfformat(result, 0) == 1) {
        for (int row = first; row < end; ++row) {
            for (int i = 0; i < columnCount; ++i) {
                if (PQgetisnull(result, row, i))
                    rows.appendNull();
                else
                    appendBinaryCell(rows, m_types[size_t(i)], PQgetvalue(result, row, i),
                                     PQgetlength(result, row, i));
            }
            rows.endRow();
        }
        return;
    }
    for (int row = first; row < end; ++row) {
        for (int i = 0; i < columnCount; ++i) {
            if (PQgetisnull(result, row, i))
                rows.appendNull();
            else
                appendCell(rows, CellKind(m_kinds[size_t(i)]), PQgetvalue(result, row, i),
                           PQgetlength(result, row, i));
        }
        rows.endRow();
    }
}

std::unique_ptr<RowStore> readResult(const PGresult* result, Catalog& catalog, const QString& sql) {
    const ResultDecoder decoder(result, catalog, sql, true);
    auto rows = std::make_unique<RowStore>(decoder.columns());
    decoder.append(*rows, result);
    return rows;
}

qsizetype appendResultRows(const PGresult* result, RowStore& into) {
    std::vector<CellKind> kinds;
    for (int i = 0; i < PQnfields(result); ++i)
        kinds.push_back(describe(PQftype(result, i), PQfmod(result, i), nullptr).kind);
    const int rowCount = PQntuples(result);
    into.reserve(into.rowCount() + rowCount);
    for (int row = 0; row < rowCount; ++row) {
        for (int i = 0; i < int(kinds.size()); ++i) {
            if (PQgetisnull(result, row, i))
                into.appendNull();
            else
                appendCell(into, kinds[size_t(i)], PQgetvalue(result, row, i),
                           PQgetlength(result, row, i));
        }
        into.endRow();
    }
    return rowCount;
}

} // namespace vx::postgres
