#include "data/postgres/PostgresSchema.h"

#include "data/postgres/PostgresSession.h"

#include <algorithm>

namespace vx::postgres {

namespace {

const QByteArray tablesQuery = QByteArrayLiteral(
    "SELECT c.relname, obj_description(c.oid, 'pg_class'), "
    "CASE WHEN n.nspname <> current_schema() THEN 'SYSTEM TABLE' "
    "WHEN c.relkind IN ('v', 'm') THEN 'VIEW' ELSE 'TABLE' END "
    "FROM pg_class c JOIN pg_namespace n ON n.oid = c.relnamespace "
    "WHERE (n.nspname = current_schema() AND c.relkind IN ('r', 'p', 'f', 'v', 'm')) "
    "OR (n.nspname IN ('pg_catalog', 'information_schema') AND c.relkind IN ('r', 'v') "
    "AND current_schema() NOT IN ('pg_catalog', 'information_schema'))");

QString text(const PGresult* result, int row, int column) {
    return QString::fromUtf8(PQgetvalue(result, row, column), PQgetlength(result, row, column));
}

} // namespace

QList<TableEntry> readTables(Session& session) {
    const ResultHandle result = session.run(tablesQuery);
    QList<TableEntry> tables;
    const int rows = PQntuples(result.get());
    tables.reserve(rows);
    for (int row = 0; row < rows; ++row) {
        TableEntry entry;
        entry.name = text(result.get(), row, 0);
        const QString comment = text(result.get(), row, 1);
        if (comment.compare(entry.name, Qt::CaseInsensitive) == 0)
            entry.name = comment;
        entry.type = text(result.get(), row, 2);
        tables << entry;
    }
    std::sort(tables.begin(), tables.end(), [](const TableEntry& a, const TableEntry& b) {
        return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
    });
    return tables;
}

QStringList readIndexNames(Session& session) {
    const ResultHandle result = session.run(
        QByteArrayLiteral("SELECT indexname FROM pg_indexes WHERE schemaname = current_schema()"));
    QStringList names;
    for (int row = 0; row < PQntuples(result.get()); ++row)
        names << text(result.get(), row, 0);
    return names;
}

QList<ProviderTypeEntry> postgresProviderTypes() {
    const QString quote = QStringLiteral("'");
    const QString hash = QStringLiteral("#");
    return {
        {QStringLiteral("SHORT"), DataType::SmallInt, 5, {}, {}, true},
        {QStringLiteral("LONG"), DataType::Integer, 10, {}, {}, true},
        {QStringLiteral("COUNTER"), DataType::Integer, 10, {}, {}, false},
        {QStringLiteral("BIGINT"), DataType::BigInt, 19, {}, {}, true},
        {QStringLiteral("SINGLE"), DataType::Single, 7, {}, {}, true},
        {QStringLiteral("DOUBLE"), DataType::Double, 15, {}, {}, true},
        {QStringLiteral("CURRENCY"), DataType::Currency, 19, {}, {}, true},
        {QStringLiteral("DECIMAL"), DataType::Numeric, 28, {}, {}, true},
        {QStringLiteral("BIT"), DataType::Boolean, 2, {}, {}, true},
        {QStringLiteral("DATETIME"), DataType::Date, 19, hash, hash, true},
        {QStringLiteral("CHAR"), DataType::WChar, 255, quote, quote, true},
        {QStringLiteral("VARCHAR"), DataType::VarWChar, 255, quote, quote, true},
        {QStringLiteral("LONGTEXT"), DataType::LongVarWChar, 536870910, quote, quote, true},
        {QStringLiteral("GUID"), DataType::Guid, 16, quote, quote, true},
        {QStringLiteral("LONGBINARY"), DataType::LongVarBinary, 1073741823, {}, {}, true},
    };
}

} // namespace vx::postgres
