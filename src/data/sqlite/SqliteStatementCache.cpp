#include "data/sqlite/SqliteStatementCache.h"

#include "data/SqlLog.h"

namespace vx::sqlite {

sqlite3_stmt* SqliteStatementCache::get(const QString& sql) {
    const auto found = m_statements.find(sql);
    if (found != m_statements.end()) {
        qCDebug(lcSql).noquote() << "sqlite (cached):" << sql;
        return found->second.get();
    }
    // Writes come in few shapes; when they do not, starting over is simpler than tracking use.
    if (m_statements.size() >= capacity)
        clear();
    StatementHandle statement = prepare(m_db, sql.toUtf8(), SQLITE_PREPARE_PERSISTENT);
    sqlite3_stmt* raw = statement.get();
    m_statements.emplace(sql, std::move(statement));
    return raw;
}

} // namespace vx::sqlite
