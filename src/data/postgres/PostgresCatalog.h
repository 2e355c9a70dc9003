#pragma once

#include "data/postgres/PostgresHandles.h"

#include <QHash>
#include <QList>
#include <QString>
#include <vector>

namespace vx::postgres {

class Session;

struct CatalogColumn {
    int number = 0;      // attnum
    QString name;        // as stored (lower case when created through the dialect)
    QString displayName; // as the repository declared it
    Oid baseType = 0;    // the type, or a domain's base type
    bool yesNo = false;  // of the yesno domain
    bool key = false;    // part of the primary key
    bool autoIncrement = false;
};

struct CatalogTable {
    Oid oid = 0;
    QString schema;
    QString name;
    QString displayName;
    char kind = 'r';
    bool hasPrimaryKey = false;
    QList<CatalogColumn> columns;

    const CatalogColumn* column(int number) const;
    // By name in any letter case, an exact match first; null when absent.
    const CatalogColumn* find(const QString& name) const;
    // "schema"."table", for statements the driver composes.
    QByteArray quotedName() const;
};

// What the server's catalog says about the tables results come from, cached per table. Names
// are kept as stored and as declared: the dialect creates tables and columns in lower case and
// records the declared spelling ("KTSecurity") as their comment, which the controls compare.
class Catalog {
public:
    explicit Catalog(Session& session);

    // Forgets everything; after statements that change tables.
    void clear();
    // Reads the tables not yet known, in one query.
    void load(const std::vector<Oid>& tables);
    // Null when the table is unknown (load it first).
    const CatalogTable* table(Oid oid) const;
    // A table on the search path by name in any letter case, an exact match first.
    // Throws TableNotFound.
    const CatalogTable& resolve(const QString& name);

private:
    Session& m_session;
    QHash<Oid, CatalogTable> m_tables;
    QHash<QString, Oid> m_byName;
};

// A double-quoted identifier.
QByteArray quoteIdentifier(const QString& name);

} // namespace vx::postgres
