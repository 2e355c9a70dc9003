#pragma once

#include <QByteArray>
#include <QVarLengthArray>
#include <QVariant>

struct sqlite3;
struct sqlite3_stmt;

namespace vx::sqlite {

// Binds values the way the repository stores them: dates as "yyyy-MM-dd HH:mm:ss" text,
// Booleans as -1/0. Bound text stays owned here, so keep the binder alive until the statement
// has run and been reset.
class SqliteParameters {
public:
    SqliteParameters(sqlite3* db, sqlite3_stmt* statement)
        : m_db(db)
        , m_statement(statement) {}
    void bind(int index, const QVariant& value);

    // The text a date takes in the repository.
    static QByteArray dateText(const QVariant& value);
    static bool isDate(const QVariant& value);

private:
    sqlite3* m_db;
    sqlite3_stmt* m_statement;
    QVarLengthArray<QByteArray, 8> m_texts; // no allocation for the usual row
};

} // namespace vx::sqlite
