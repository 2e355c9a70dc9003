#include "data/postgres/PostgresRowWriter.h"

#include "data/postgres/PostgresCatalog.h"
#include "data/postgres/PostgresErrors.h"
#include "data/postgres/PostgresParameters.h"
#include "data/postgres/PostgresSession.h"

namespace vx::postgres {

namespace {

struct Statement {
    QByteArray sql;
    Parameters parameters;

    QByteArray next(const QVariant& value, const CatalogColumn* column) {
        parameters.push_back(parameterText(value, column));
        return '$' + QByteArray::number(qsizetype(parameters.size()));
    }
};

const CatalogColumn& columnOf(const CatalogTable& table, const QString& name) {
    const CatalogColumn* column = table.find(name);
    if (!column)
        throw Error(
            ErrorNumber::ColumnNotFound,
            QStringLiteral("The table '%1' has no column named '%2'.").arg(table.displayName, name),
            QStringLiteral("PostgreSQL"));
    return *column;
}

bool isText(Oid type) {
    return type == TypeOid::Text || type == TypeOid::VarChar || type == TypeOid::BpChar;
}

bool sameColumns(const QStringList& keys, const CatalogTable& table) {
    int keyColumns = 0;
    for (const CatalogColumn& column : table.columns) {
        if (!column.key)
            continue;
        ++keyColumns;
        if (!keys.contains(column.name, Qt::CaseInsensitive) &&
            !keys.contains(column.displayName, Qt::CaseInsensitive))
            return false;
    }
    return keyColumns > 0 && keyColumns == keys.size();
}

// The condition that finds the row by its original values; null matches null.
QByteArray matchCondition(Statement& statement, const CatalogTable& table,
                          const QStringList& columns, const QVariantList& values, bool exact) {
    if (columns.isEmpty() || columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The row to change is not identified by its values."));
    QByteArray condition;
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const CatalogColumn& column = columnOf(table, columns[i]);
        QByteArray name = quoteIdentifier(column.name);
        if (!condition.isEmpty())
            condition += " AND ";
        if (!values[i].isValid() || values[i].isNull()) {
            condition += name + " IS NULL";
            continue;
        }
        // Values are read to the second; a column may hold fractions.
        if (column.baseType == TypeOid::Timestamp || column.baseType == TypeOid::TimestampTz)
            name = "date_trunc('second', " + name + ")";
        // Without a key, 'abc' and 'ABC' are different rows even under the case-blind collation.
        else if (exact && isText(column.baseType))
            name += " COLLATE \"default\"";
        condition += name + " = " + statement.next(values[i], &column);
    }
    return condition;
}

// The columns that must still hold what was read. Compared exactly: another user's change of
// letter case is a change.
QByteArray checkCondition(Statement& statement, const CatalogTable& table,
                          const QStringList& columns, const QVariantList& values) {
    if (columns.isEmpty())
        return {};
    if (columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column checked needs one value."));
    return " AND " + matchCondition(statement, table, columns, values, true);
}

// The WHERE clause for a write to one row.
QByteArray whereOneRow(Statement& statement, const CatalogTable& table,
                       const QStringList& keyColumns, const QVariantList& keyValues,
                       const QStringList& checkColumns, const QVariantList& checkValues) {
    const bool keyed = sameColumns(keyColumns, table);
    // Only plain tables have a ctid that names one row.
    if (keyed || table.kind != 'r')
        return " WHERE " + matchCondition(statement, table, keyColumns, keyValues, false) +
               checkCondition(statement, table, checkColumns, checkValues);
    return " WHERE ctid = (SELECT ctid FROM " + table.quotedName() + " WHERE " +
           matchCondition(statement, table, keyColumns, keyValues, true) +
           checkCondition(statement, table, checkColumns, checkValues) + " LIMIT 1)";
}

qint64 affectedRows(const PGresult* result) {
    return QByteArray(PQcmdTuples(const_cast<PGresult*>(result))).toLongLong();
}

template <typename Write>
auto forgettingStaleNames(Catalog& catalog, Write write) {
    try {
        return write();
    } catch (const Error& error) {
        // Another session may have changed the table since it was read.
        if (error.number() == ErrorNumber::TableNotFound ||
            error.number() == ErrorNumber::ColumnNotFound)
            catalog.clear();
        throw;
    }
}

} // namespace

RowWriter::RowWriter(Session& session, Catalog& catalog)
    : m_session(session)
    , m_catalog(catalog) {}

QVariant RowWriter::insert(const QString& table, const QStringList& columns,
                           const QVariantList& values, const QString& autoIncrementColumn) {
    if (columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column written needs one value."));
    return forgettingStaleNames(m_catalog, [&] {
        const CatalogTable& target = m_catalog.resolve(table);
        Statement statement;
        statement.sql = "INSERT INTO " + target.quotedName();
        if (columns.isEmpty()) {
            statement.sql += " DEFAULT VALUES";
        } else {
            QByteArray names;
            QByteArray placeholders;
            for (qsizetype i = 0; i < columns.size(); ++i) {
                const CatalogColumn& column = columnOf(target, columns[i]);
                names += (i ? ", " : "") + quoteIdentifier(column.name);
                placeholders += (i ? ", " : "") + statement.next(values[i], &column);
            }
            statement.sql += " (" + names + ") VALUES (" + placeholders + ')';
        }
        const CatalogColumn* generated =
            autoIncrementColumn.isEmpty() ? nullptr : &columnOf(target, autoIncrementColumn);
        if (generated)
            statement.sql += " RETURNING " + quoteIdentifier(generated->name);
        const ResultHandle result = m_session.run(statement.sql, statement.parameters);
        if (!generated || PQntuples(result.get()) == 0 || PQgetisnull(result.get(), 0, 0))
            return QVariant();
        const qint64 value = QByteArray(PQgetvalue(result.get(), 0, 0)).toLongLong();
        return value == qint32(value) ? QVariant(int(value)) : QVariant(qlonglong(value));
    });
}

qint64 RowWriter::update(const QString& table, const QStringList& columns,
                         const QVariantList& values, const QStringList& keyColumns,
                         const QVariantList& keyValues, const QStringList& checkColumns,
                         const QVariantList& checkValues) {
    if (columns.isEmpty())
        return 0;
    if (columns.size() != values.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column written needs one value."));
    return forgettingStaleNames(m_catalog, [&] {
        const CatalogTable& target = m_catalog.resolve(table);
        Statement statement;
        statement.sql = "UPDATE " + target.quotedName() + " SET ";
        for (qsizetype i = 0; i < columns.size(); ++i) {
            const CatalogColumn& column = columnOf(target, columns[i]);
            statement.sql += (i ? ", " : "") + quoteIdentifier(column.name) + " = " +
                             statement.next(values[i], &column);
        }
        statement.sql +=
            whereOneRow(statement, target, keyColumns, keyValues, checkColumns, checkValues);
        return affectedRows(m_session.run(statement.sql, statement.parameters).get());
    });
}

qint64 RowWriter::remove(const QString& table, const QStringList& keyColumns,
                         const QVariantList& keyValues, const QStringList& checkColumns,
                         const QVariantList& checkValues) {
    return forgettingStaleNames(m_catalog, [&] {
        const CatalogTable& target = m_catalog.resolve(table);
        Statement statement;
        statement.sql = "DELETE FROM " + target.quotedName();
        statement.sql +=
            whereOneRow(statement, target, keyColumns, keyValues, checkColumns, checkValues);
        return affectedRows(m_session.run(statement.sql, statement.parameters).get());
    });
}

} // namespace vx::postgres
