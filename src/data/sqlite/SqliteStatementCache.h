#pragma once

#include "data/sqlite/SqliteSupport.h"

#include <QHashFunctions>
#include <unordered_map>

namespace vx::sqlite {

// Prepared statements kept by their text, for the writes a record set repeats row after row.
class SqliteStatementCache {
public:
    void attach(sqlite3* db) { m_db = db; }
    // Prepares on first use; the statement stays valid until clear().
    sqlite3_stmt* get(const QString& sql);
    void clear() {
        m_statements.clear();
        ++m_generation;
    }
    // Changes whenever statements handed out before may have been finalised.
    quint64 generation() const { return m_generation; }

private:
    static constexpr size_t capacity = 48;
    sqlite3* m_db = nullptr;
    quint64 m_generation = 0;
    struct TextHash {
        size_t operator()(const QString& text) const noexcept { return qHash(text); }
    };
    std::unordered_map<QString, StatementHandle, TextHash> m_statements;
};

} // namespace vx::sqlite
