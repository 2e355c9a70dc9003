// The query parser's restriction: a query it accepts keeps the restriction as the first term of
// the main statement's WHERE, with the query's own condition closed in parentheses after it, so
// nothing in the query (a saved favourite, a keyword, a typed criterion) widens the result.
#include "companions/SqlQueryParser.h"
#include "data/Error.h"
#include "data/dialect/SqlLexer.h"

#include <cstdint>
#include <cstdlib>

namespace {

using vx::dialect::SqlToken;
using vx::dialect::SqlTokens;

size_t nextSignificant(const SqlTokens& tokens, size_t i) {
    while (i < tokens.size() && !tokens[i].isSignificant())
        ++i;
    return i;
}

// After the restriction (or the condition's parentheses) only the end or a clause may follow.
bool endsOrStartsClause(const SqlTokens& tokens, size_t i) {
    i = nextSignificant(tokens, i);
    if (i == tokens.size())
        return true;
    return tokens[i].isWord(u"ORDER") || tokens[i].isWord(u"GROUP") ||
           tokens[i].isWord(u"HAVING") || tokens[i].isWord(u"LIMIT");
}

// The index after the parenthesis that closes the one at `open`, or tokens.size().
size_t afterClosing(const SqlTokens& tokens, size_t open) {
    int depth = 0;
    for (size_t i = open; i < tokens.size(); ++i) {
        if (tokens[i].isSymbol(u"("))
            ++depth;
        else if (tokens[i].isSymbol(u")") && --depth == 0)
            return i + 1;
    }
    return tokens.size();
}

bool restrictionHolds(const QString& restricted, qint16 userId) {
    const SqlTokens tokens = vx::dialect::tokenize(restricted);
    int depth = 0;
    qsizetype at = 0;
    for (size_t i = 0; i < tokens.size(); at += tokens[i].text.size(), ++i) {
        if (tokens[i].isSymbol(u"("))
            ++depth;
        else if (tokens[i].isSymbol(u")"))
            --depth;
        if (depth != 0 || !tokens[i].isWord(u"WHERE"))
            continue;
        const QString tail = restricted.mid(at);
        const QString rule = QStringLiteral(" NOT IN (SELECT itemid FROM KTSecurity WHERE "
                                            "UserID = %1)")
                                 .arg(userId);
        QString start;
        for (const QString& item : {QStringLiteral("itemid"), QStringLiteral("ktitem.itemid")}) {
            if (tail.startsWith(QStringLiteral("WHERE ") + item + rule))
                start = QStringLiteral("WHERE ") + item + rule;
        }
        if (start.isEmpty())
            return false;
        // Skip the restriction's tokens: they end with its closing parenthesis.
        size_t after = i;
        for (qsizetype covered = 0; after < tokens.size() && covered < start.size(); ++after)
            covered += tokens[after].text.size();
        if (endsOrStartsClause(tokens, after))
            return true;
        const size_t conjunction = nextSignificant(tokens, after);
        if (!tokens[conjunction].isWord(u"AND"))
            return false;
        const size_t open = nextSignificant(tokens, conjunction + 1);
        if (open == tokens.size() || !tokens[open].isSymbol(u"("))
            return false;
        return endsOrStartsClause(tokens, afterClosing(tokens, open));
    }
    return false; // no WHERE of the main statement at all
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    qint16 userId = qint16(data[0] | (data[1] << 8));
    const qint16 asked = userId;
    const QString query =
        QString::fromUtf8(reinterpret_cast<const char*>(data + 2), qsizetype(size - 2));
    vx::SqlQueryParser parser;
    QString restricted;
    try {
        restricted = parser.QueryStringWithSecurity(query, userId);
    } catch (const vx::Error&) {
        return 0; // refused: nothing runs
    }
    if (userId != asked || !restrictionHolds(restricted, userId))
        std::abort();
    return 0;
}
