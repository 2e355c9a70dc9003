#include "data/sqlite/SqliteResultReader.h"

#include "data/DataType.h"
#include "data/dialect/SqlLexer.h"
#include "data/sqlite/SqliteSupport.h"
#include "data/sqlite/SqliteTableKeys.h"

#include <QHash>
#include <limits>
#include <vector>

namespace vx::sqlite {

namespace {

// Computed columns have no declared type; it comes from their first value. Until every such
// column has shown one, rows wait here (normally just the first row).
constexpr size_t maxRowsToWaitFor = 1000;

QString utf8(const char* text) {
    return text ? QString::fromUtf8(text) : QString();
}

ColumnInfo describeColumn(sqlite3_stmt* statement, int index, SqliteTableKeys& keys,
                          bool& typeKnown) {
    ColumnInfo column;
    column.name = utf8(sqlite3_column_name(statement, index));
    const char* declared = sqlite3_column_decltype(statement, index);
    typeKnown = declared != nullptr;
    if (declared) {
        const DeclaredType type = parseDeclaredType(QString::fromUtf8(declared));
        column.type = type.type;
        column.definedSize = type.definedSize;
        column.autoIncrement = type.autoIncrement;
    }
    const char* table = sqlite3_column_table_name(statement, index);
    const char* origin = sqlite3_column_origin_name(statement, index);
    if (table && origin) {
        column.baseTable = utf8(table);
        column.baseColumn = utf8(origin);
        const TableKey& key =
            keys.of(utf8(sqlite3_column_database_name(statement, index)), column.baseTable);
        column.keyColumn = key.columns.contains(column.baseColumn, Qt::CaseInsensitive);
        if (key.autoIncrementColumn.compare(column.baseColumn, Qt::CaseInsensitive) == 0)
            column.autoIncrement = true;
    }
    return column;
}

void typeFromValue(ColumnInfo& column, sqlite3_stmt* statement, int index) {
    switch (sqlite3_column_type(statement, index)) {
    case SQLITE_INTEGER: {
        const qint64 value = sqlite3_column_int64(statement, index);
        const bool fits = value >= std::numeric_limits<qint32>::min() &&
                          value <= std::numeric_limits<qint32>::max();
        column.type = fits ? DataType::Integer : DataType::BigInt;
        column.definedSize = fits ? 4 : 8;
        break;
    }
    case SQLITE_FLOAT:
        column.type = DataType::Double;
        column.definedSize = 8;
        break;
    default:
        column.type = DataType::VarWChar;
        column.definedSize = 255;
    }
}

// The table as the query spells it ("ktitem" for KTItem), for repeated column names.
QString spellingInQuery(const dialect::SqlTokens& tokens, const QString& table) {
    for (const auto& token : tokens) {
        if (token.isName() && token.name().compare(table, Qt::CaseInsensitive) == 0)
            return token.name();
    }
    return table;
}

void nameRepeatedColumns(ColumnList& columns, const QString& sql) {
    QHash<QString, int> counts;
    for (const auto& column : columns)
        ++counts[column.name.toLower()];
    dialect::SqlTokens tokens;
    for (auto& column : columns) {
        if (counts.value(column.name.toLower()) < 2 || column.baseTable.isEmpty())
            continue;
        if (tokens.empty())
            tokens = dialect::tokenize(sql);
        column.name = spellingInQuery(tokens, column.baseTable) + u'.' + column.name;
    }
}

// One lookup of the cell, then the value's own accessors: each column_* call repeats checks.
void appendCell(RowStore& rows, sqlite3_stmt* statement, int index) {
    sqlite3_value* value = sqlite3_column_value(statement, index);
    switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
        rows.appendNull();
        break;
    case SQLITE_INTEGER:
        rows.appendInteger(sqlite3_value_int64(value));
        break;
    case SQLITE_FLOAT:
        rows.appendReal(sqlite3_value_double(value));
        break;
    default: {
        const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
        rows.appendText(text, sqlite3_value_bytes(value));
    }
    }
}

QVariant cellValue(sqlite3_stmt* statement, int index) {
    switch (sqlite3_column_type(statement, index)) {
    case SQLITE_NULL:
        return {};
    case SQLITE_INTEGER:
        return QVariant::fromValue(qint64(sqlite3_column_int64(statement, index)));
    case SQLITE_FLOAT:
        return sqlite3_column_double(statement, index);
    default: {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, index));
        return QByteArray(text, sqlite3_column_bytes(statement, index));
    }
    }
}

void appendValue(RowStore& rows, const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        rows.appendNull();
        break;
    case QMetaType::LongLong:
        rows.appendInteger(value.toLongLong());
        break;
    case QMetaType::Double:
        rows.appendReal(value.toDouble());
        break;
    default: {
        const QByteArray bytes = value.toByteArray();
        rows.appendText(bytes.constData(), bytes.size());
    }
    }
}

} // namespace

ColumnList describeResult(sqlite3_stmt* statement, const QString& sql, SqliteTableKeys& keys,
                          bool& allTyped) {
    const int count = sqlite3_column_count(statement);
    ColumnList columns;
    columns.reserve(count);
    allTyped = true;
    for (int i = 0; i < count; ++i) {
        bool typeKnown = true;
        columns.append(describeColumn(statement, i, keys, typeKnown));
        if (!typeKnown) {
            allTyped = false;
            columns.back().type = DataType::VarWChar;
            columns.back().definedSize = 255;
        }
    }
    nameRepeatedColumns(columns, sql);
    return columns;
}

struct ResultRows::Private {
    sqlite3* db = nullptr;
    sqlite3_stmt* statement = nullptr;
    ColumnList columns;
    std::vector<int> untyped;
    std::vector<unsigned char> declared;
    int count = 0;
    int code = SQLITE_ROW; // of the last step; SQLITE_ROW before the first
    bool started = false;
    bool typed = false;
    std::vector<std::vector<QVariant>> waiting;

    void step() {
        code = sqlite3_step(statement);
        if (code != SQLITE_ROW && code != SQLITE_DONE)
            fail(db, code);
    }

    // Steps until every computed column has shown a value (normally the first row).
    void settleTypes() {
        step();
        while (!untyped.empty() && code == SQLITE_ROW && waiting.size() < maxRowsToWaitFor) {
            std::vector<QVariant> row(static_cast<size_t>(count));
            for (int i = 0; i < count; ++i)
                row[size_t(i)] = cellValue(statement, i);
            waiting.push_back(std::move(row));
            std::erase_if(untyped, [&](int i) {
                if (sqlite3_column_type(statement, i) == SQLITE_NULL)
                    return false;
                typeFromValue(columns[i], statement, i);
                return true;
            });
            step();
        }
        for (int i : untyped) { // never showed a value: text, as the platform reports such columns
            columns[i].type = DataType::VarWChar;
            columns[i].definedSize = 255;
        }
        untyped.clear();
        typed = true;
    }
};

ResultRows::ResultRows(sqlite3* db, sqlite3_stmt* statement, const QString& sql,
                       SqliteTableKeys& keys)
    : d(std::make_unique<Private>()) {
    d->db = db;
    d->statement = statement;
    d->count = sqlite3_column_count(statement);
    d->columns.reserve(d->count);
    for (int i = 0; i < d->count; ++i) {
        bool typeKnown = true;
        d->columns.append(describeColumn(statement, i, keys, typeKnown));
        d->declared.push_back(typeKnown ? 1 : 0);
        if (!typeKnown) {
            d->untyped.push_back(i);
            d->columns[i].type = DataType::VarWChar;
            d->columns[i].definedSize = 255;
        }
    }
    nameRepeatedColumns(d->columns, sql);
}

ResultRows::~ResultRows() = default;

const ColumnList& ResultRows::columns() const {
    return d->columns;
}

bool ResultRows::typeDeclared(int column) const {
    return d->declared.at(size_t(column)) != 0;
}

bool ResultRows::atEnd() const {
    return d->started && d->waiting.empty() && d->code != SQLITE_ROW;
}

std::unique_ptr<RowStore> ResultRows::read(qsizetype maxRows, qsizetype reserve) {
    if (!d->started) {
        d->started = true;
        d->settleTypes();
    }
    auto rows = std::make_unique<RowStore>(d->columns);
    if (reserve > 0)
        rows->reserve(reserve);
    fetch(*rows, maxRows);
    return rows;
}

qsizetype ResultRows::fetch(RowStore& into, qsizetype maxRows) {
    if (!d->started) {
        d->started = true;
        d->settleTypes();
    }
    RowStore* rows = &into;
    const qsizetype limit = maxRows > 0 ? maxRows : std::numeric_limits<qsizetype>::max();
    qsizetype taken = 0;
    if (!d->waiting.empty()) {
        size_t used = 0;
        for (; used < d->waiting.size() && taken < limit; ++used, ++taken) {
            for (const QVariant& value : d->waiting[used])
                appendValue(*rows, value);
            rows->endRow();
        }
        d->waiting.erase(d->waiting.begin(), d->waiting.begin() + qsizetype(used));
        if (!d->waiting.empty())
            return taken;
    }
    sqlite3_stmt* statement = d->statement;
    const int count = d->count;
    for (; taken < limit && d->code == SQLITE_ROW; ++taken) {
        for (int i = 0; i < count; ++i)
            appendCell(*rows, statement, i);
        rows->endRow();
        d->step();
    }
    return taken;
}

std::unique_ptr<RowStore> readResult(sqlite3* db, sqlite3_stmt* statement, const QString& sql,
                                     SqliteTableKeys& keys, qsizetype expectedRows) {
    ResultRows result(db, statement, sql, keys);
    return result.read(0, expectedRows);
}

} // namespace vx::sqlite
