#include "data/postgres/PostgresCatalog.h"

#include "data/postgres/PostgresErrors.h"
#include "data/postgres/PostgresSession.h"

namespace vx::postgres {

namespace {

// One row per column of each table asked for; a table without columns gives one row of nulls.
const QByteArray tablesQuery = QByteArrayLiteral(
    "SELECT c.oid, n.nspname, c.relname, obj_description(c.oid, 'pg_class'), c.relkind, "
    "a.attnum, a.attname, col_description(c.oid, a.attnum), "
    "CASE WHEN t.typtype = 'd' THEN t.typbasetype ELSE t.oid END, "
    "t.typtype = 'd' AND t.typname = 'yesno', "
    "COALESCE(a.attnum = ANY (i.indkey), false), i.indrelid IS NOT NULL, "
    "a.attidentity <> '' OR COALESCE(pg_get_expr(d.adbin, d.adrelid) LIKE 'nextval(%', false) "
    "FROM pg_class c "
    "JOIN pg_namespace n ON n.oid = c.relnamespace "
    "LEFT JOIN pg_attribute a ON a.attrelid = c.oid AND a.attnum > 0 AND NOT a.attisdropped "
    "LEFT JOIN pg_type t ON t.oid = a.atttypid "
    "LEFT JOIN pg_attrdef d ON d.adrelid = c.oid AND d.adnum = a.attnum "
    "LEFT JOIN pg_index i ON i.indrelid = c.oid AND i.indisprimary "
    "WHERE c.oid = ANY ($1::oid[]) ORDER BY c.oid, a.attnum");

const QByteArray resolveQuery = QByteArrayLiteral(
    "SELECT c.oid FROM pg_class c "
    "WHERE c.relkind IN ('r', 'v', 'm', 'p', 'f') AND lower(c.relname) = lower($1) "
    "AND pg_table_is_visible(c.oid) ORDER BY c.relname = $1 DESC, c.oid LIMIT 1");

QString text(const PGresult* result, int row, int column) {
    return QString::fromUtf8(PQgetvalue(result, row, column), PQgetlength(result, row, column));
}

bool flag(const PGresult* result, int row, int column) {
    return PQgetvalue(result, row, column)[0] == 't';
}

// The declared spelling, when the comment is one: the stored name in other letter case.
QString declaredName(const PGresult* result, int row, int column, const QString& stored) {
    if (PQgetisnull(result, row, column))
        return stored;
    const QString comment = text(result, row, column);
    return comment.compare(stored, Qt::CaseInsensitive) == 0 ? comment : stored;
}

} // namespace

QByteArray quoteIdentifier(const QString& name) {
    QByteArray quoted = name.toUtf8();
    quoted.replace('"', "\"\"");
    return '"' + quoted + '"';
}

const CatalogColumn* CatalogTable::column(int number) const {
    for (const CatalogColumn& column : columns) {
        if (column.number == number)
            return &column;
    }
    return nullptr;
}

const CatalogColumn* CatalogTable::find(const QString& wanted) const {
    const CatalogColumn* caseless = nullptr;
    for (const CatalogColumn& column : columns) {
        if (column.name == wanted)
            return &column;
        if (!caseless && (column.name.compare(wanted, Qt::CaseInsensitive) == 0 ||
                          column.displayName.compare(wanted, Qt::CaseInsensitive) == 0))
            caseless = &column;
    }
    return caseless;
}

QByteArray CatalogTable::quotedName() const {
    return quoteIdentifier(schema) + '.' + quoteIdentifier(name);
}

Catalog::Catalog(Session& session)
    : m_session(session) {}

void Catalog::clear() {
    m_tables.clear();
    m_byName.clear();
}

void Catalog::load(const std::vector<Oid>& tables) {
    QByteArray list;
    for (const Oid oid : tables) {
        if (oid == InvalidOid || m_tables.contains(oid))
            continue;
        list += (list.isEmpty() ? "" : ",") + QByteArray::number(oid);
    }
    if (list.isEmpty())
        return;
    const ResultHandle result = m_session.run(tablesQuery, {'{' + list + '}'});
    const PGresult* rows = result.get();
    for (int row = 0; row < PQntuples(rows); ++row) {
        const Oid oid = Oid(QByteArray(PQgetvalue(rows, row, 0)).toUInt());
        CatalogTable& table = m_tables[oid];
        if (table.oid == InvalidOid) {
            table.oid = oid;
            table.schema = text(rows, row, 1);
            table.name = text(rows, row, 2);
            table.displayName = declaredName(rows, row, 3, table.name);
            table.kind = PQgetvalue(rows, row, 4)[0];
            table.hasPrimaryKey = flag(rows, row, 11);
        }
        if (PQgetisnull(rows, row, 5))
            continue;
        CatalogColumn column;
        column.number = QByteArray(PQgetvalue(rows, row, 5)).toInt();
        column.name = text(rows, row, 6);
        column.displayName = declaredName(rows, row, 7, column.name);
        column.baseType = Oid(QByteArray(PQgetvalue(rows, row, 8)).toUInt());
        column.yesNo = flag(rows, row, 9);
        column.key = flag(rows, row, 10);
        column.autoIncrement = flag(rows, row, 12);
        table.columns.append(column);
    }
}

const CatalogTable* Catalog::table(Oid oid) const {
    const auto found = m_tables.constFind(oid);
    return found == m_tables.constEnd() ? nullptr : &found.value();
}

const CatalogTable& Catalog::resolve(const QString& name) {
    // A name remembered from before may stand for a table another session dropped since.
    for (int attempt = 0; attempt < 2; ++attempt) {
        const bool remembered = m_byName.contains(name);
        Oid oid = m_byName.value(name, InvalidOid);
        if (!remembered) {
            const ResultHandle result = m_session.run(resolveQuery, {name.toUtf8()});
            if (PQntuples(result.get()) == 0)
                break;
            oid = Oid(QByteArray(PQgetvalue(result.get(), 0, 0)).toUInt());
            m_byName.insert(name, oid);
        }
        load({oid});
        if (const CatalogTable* found = table(oid))
            return *found;
        m_byName.remove(name);
        if (!remembered)
            break;
    }
    throw tableNotFound(name);
}

} // namespace vx::postgres
