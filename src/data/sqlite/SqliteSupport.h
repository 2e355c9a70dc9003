#pragma once

#include "data/Error.h"

#include <QByteArray>
#include <QString>
#include <memory>
#include <sqlite3.h>

namespace vx::sqlite {

struct DatabaseCloser {
    void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};
struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, DatabaseCloser>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

// The engine's failure as the layer's error; well-known cases keep the platform's numbers.
Error errorFrom(sqlite3* db, int code);
[[noreturn]] void fail(sqlite3* db, int code);

// Prepares the first statement of `sql`; `tail` (when given) receives what follows it.
StatementHandle prepare(sqlite3* db, const QByteArray& sql, unsigned flags = 0,
                        const char** tail = nullptr);
// Runs a statement that returns nothing the caller needs (pragmas, transaction control).
void run(sqlite3* db, const char* sql);

// Resets a reused statement on leaving scope, so it holds no lock and no bound text after use.
class ResetOnExit {
public:
    explicit ResetOnExit(sqlite3_stmt* statement)
        : m_statement(statement) {}
    ~ResetOnExit() {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    ResetOnExit(const ResetOnExit&) = delete;
    ResetOnExit& operator=(const ResetOnExit&) = delete;

private:
    sqlite3_stmt* m_statement;
};

} // namespace vx::sqlite
