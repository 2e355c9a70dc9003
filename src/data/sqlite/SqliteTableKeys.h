#pragma once

#include <QHash>
#include <QStringList>

struct sqlite3;

namespace vx::sqlite {

struct TableKey {
    QStringList columns;         // the columns that find one row, in key order
    QString autoIncrementColumn; // the engine fills it on insert
    bool primaryKey = false;     // declared PRIMARY KEY (otherwise a unique index, or none)
};

// What identifies a table's rows: its primary key or, for tables keyed the old way by a unique
// index ("WITH PRIMARY"), that index. Cached per table until the schema may have changed.
class SqliteTableKeys {
public:
    explicit SqliteTableKeys(sqlite3* db)
        : m_db(db) {}
    const TableKey& of(const QString& database, const QString& table);
    void clear() { m_cache.clear(); }

private:
    TableKey read(const QString& database, const QString& table) const;
    sqlite3* m_db;
    QHash<QString, TableKey> m_cache;
};

} // namespace vx::sqlite
