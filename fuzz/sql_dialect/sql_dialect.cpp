// The dialect step: the Jet-style SQL the controls build, rewritten for each engine, and the
// FoxPro driver's table statement.
#include "data/Error.h"
#include "data/dbf/CreateTableStatement.h"
#include "data/dialect/PostgresDialect.h"
#include "data/dialect/SqlLexer.h"
#include "data/dialect/SqliteDialect.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vx;
    const QString sql = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    // Joining the tokens gives the text back unchanged: rewrites rely on it.
    if (dialect::joinTokens(dialect::tokenize(sql)) != sql)
        std::abort();
    try {
        SqliteDialect().rewrite(sql);
    } catch (const Error&) {
    }
    for (const bool caseInsensitive : {true, false}) {
        try {
            PostgresDialect(caseInsensitive).rewriteStatements(sql);
        } catch (const Error&) {
        }
    }
    try {
        if (dbf::CreateTableStatement::looksLikeOne(sql))
            dbf::CreateTableStatement::parse(sql);
    } catch (const Error&) {
    }
    return 0;
}
