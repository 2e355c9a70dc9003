#include "companions/SqlQueryParser.h"

#include "data/Error.h"
#include "data/dialect/SqlLexer.h"

namespace vx {

namespace {

using dialect::SqlToken;
using dialect::SqlTokens;

[[noreturn]] void refuse(const QString& reason) {
    throw Error(ErrorNumber::InvalidArgument,
                QStringLiteral("The query cannot be limited to the documents you may see: %1. "
                               "Check the search entries and keywords for quotes and "
                               "parentheses.")
                    .arg(reason));
}

// The lexer ends an unterminated quote at the end of the text; only a real closing quote counts.
bool isClosed(const SqlToken& token) {
    const QString& text = token.text;
    const QChar open = text.front();
    const QChar close = open == u'[' ? QChar(u']') : open;
    for (qsizetype i = 1; i < text.size(); ++i) {
        if (text[i] != close)
            continue;
        if (open != u'[' && i + 1 < text.size() && text[i + 1] == close) {
            ++i;
            continue;
        }
        return i == text.size() - 1;
    }
    return false;
}

// Characters that some engine reads as the start of something else: parameters ("$1", ":a",
// "@a(...)" swallowing what follows), dollar quotes, escapes, or operators the other engine
// takes for quotes ('`').
bool isUnsafeCharacter(QChar c) {
    switch (c.unicode()) {
    case '$':
    case ':':
    case '@':
    case '?':
    case '#':
    case '\\':
    case '`':
    case '{':
    case '}':
    case ';':
        return true;
    default:
        return false;
    }
}

// Refuses a text whose structure an engine could read differently from what is seen here, or
// whose own text could end the restriction's scope: every quote and parenthesis must close,
// there are no comments, no further statements, no set operators joining another query, and
// nothing an engine reads as a quote, escape or parameter outside quoted texts.
void checkSealed(const SqlTokens& tokens) {
    int depth = 0;
    const SqlToken* previous = nullptr;
    for (const SqlToken& token : tokens) {
        switch (token.kind) {
        case SqlToken::Comment:
            refuse(QStringLiteral("it holds a comment"));
        case SqlToken::String:
        case SqlToken::QuotedName:
            if (!isClosed(token))
                refuse(QStringLiteral("a quote or bracket is not closed"));
            if (token.text.front() == u'`')
                refuse(QStringLiteral("it holds \"`\" outside a quoted text"));
            // E'...' and the like read backslashes as escapes on some engines.
            if (token.kind == SqlToken::String && previous && previous->kind == SqlToken::Word)
                refuse(QStringLiteral("a quoted text follows the word \"%1\" directly")
                           .arg(previous->text));
            break;
        case SqlToken::Word:
            if (token.text.contains(u'$'))
                refuse(QStringLiteral("it holds \"$\" outside a quoted text"));
            if (depth == 0 && (token.isWord(u"UNION") || token.isWord(u"INTERSECT") ||
                               token.isWord(u"EXCEPT") || token.isWord(u"MINUS")))
                refuse(QStringLiteral("it joins another query with %1").arg(token.text));
            break;
        case SqlToken::Symbol:
            if (token.text == u"(") {
                ++depth;
            } else if (token.text == u")") {
                if (--depth < 0)
                    refuse(QStringLiteral("a parenthesis closes that was never opened"));
            } else {
                for (const QChar c : token.text) {
                    if (isUnsafeCharacter(c))
                        refuse(QStringLiteral("it holds \"%1\" outside a quoted text").arg(c));
                }
            }
            break;
        default:
            break;
        }
        previous = &token;
    }
    if (depth != 0)
        refuse(QStringLiteral("a parenthesis is not closed"));
}

bool isClauseWord(const SqlTokens& tokens, size_t i, QStringView first, bool needsBy) {
    if (!tokens[i].isWord(first))
        return false;
    if (!needsBy)
        return true;
    size_t next = i + 1;
    while (next < tokens.size() && !tokens[next].isSignificant())
        ++next;
    return next < tokens.size() && tokens[next].isWord(u"BY");
}

struct Clauses {
    qsizetype where = -1; // start of "WHERE"
    qsizetype tail = -1;  // start of GROUP BY / HAVING / ORDER BY / LIMIT after it
};

// Positions of the main statement's clauses; what stands in parentheses (sub-queries) is not
// the main statement's.
Clauses findClauses(const SqlTokens& tokens) {
    Clauses found;
    int depth = 0;
    qsizetype at = 0;
    for (size_t i = 0; i < tokens.size(); at += tokens[i].text.size(), ++i) {
        const SqlToken& token = tokens[i];
        if (token.isSymbol(u"("))
            ++depth;
        else if (token.isSymbol(u")"))
            --depth;
        if (depth != 0 || token.kind != SqlToken::Word)
            continue;
        if (found.where < 0 && token.isWord(u"WHERE")) {
            found.where = at;
        } else if (isClauseWord(tokens, i, u"ORDER", true) ||
                   isClauseWord(tokens, i, u"GROUP", true) ||
                   isClauseWord(tokens, i, u"HAVING", false) ||
                   isClauseWord(tokens, i, u"LIMIT", false)) {
            found.tail = at;
            break;
        }
    }
    return found;
}

// The restriction names the item id the main statement's tables give it; a sub-query or a
// function among those tables could hand it any value ("(SELECT 0 AS itemid, ...) AS q"), so
// the main FROM clause may name tables only.
void checkFromClause(const SqlTokens& tokens) {
    int depth = 0;
    bool inFrom = false;
    for (size_t i = 0; i < tokens.size(); ++i) {
        const SqlToken& token = tokens[i];
        if (depth == 0 && token.kind == SqlToken::Word) {
            if (token.isWord(u"FROM"))
                inFrom = true;
            else if (token.isWord(u"WHERE") || isClauseWord(tokens, i, u"ORDER", true) ||
                     isClauseWord(tokens, i, u"GROUP", true) ||
                     isClauseWord(tokens, i, u"HAVING", false) ||
                     isClauseWord(tokens, i, u"LIMIT", false))
                return;
        }
        if (token.isSymbol(u"(")) {
            if (inFrom && depth == 0)
                refuse(QStringLiteral("its FROM clause holds a sub-query or a function where "
                                      "only tables may stand"));
            ++depth;
        } else if (token.isSymbol(u")")) {
            --depth;
        }
    }
}

bool namesTable(const SqlTokens& tokens, QStringView table) {
    for (const SqlToken& token : tokens) {
        if (token.isName() && QStringView(token.name()).compare(table, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

} // namespace

SqlQueryParser::SqlQueryParser(QObject* parent)
    : VXSQLQuery(parent) {}

QString SqlQueryParser::QueryStringWithSecurity(const QString& query, qint16& userId) {
    // The engines end a statement's text at a null character, wherever it stands.
    if (query.contains(QChar(u'\0')))
        refuse(QStringLiteral("it holds a null character"));
    const SqlTokens tokens = dialect::tokenize(query);
    checkSealed(tokens);
    checkFromClause(tokens);
    for (const SqlToken& token : tokens) {
        if (!token.isSignificant())
            continue;
        // A leading WITH could name a table of its own "KTSecurity".
        if (token.isWord(u"WITH"))
            refuse(QStringLiteral("it starts with WITH"));
        break;
    }

    // Qualified when the query joins KTItem with a group table: both have an itemid.
    const QString item =
        namesTable(tokens, u"ktitem") ? QStringLiteral("ktitem.itemid") : QStringLiteral("itemid");
    const QString restriction = item +
                                QStringLiteral(" NOT IN (SELECT itemid FROM KTSecurity WHERE "
                                               "UserID = ") +
                                QString::number(userId) + QLatin1Char(')');

    // The query's own condition goes in parentheses after the restriction. Being sealed, it
    // cannot close them early, so no OR in it reaches past the restriction.
    const Clauses clauses = findClauses(tokens);
    const qsizetype tailStart = clauses.tail < 0 ? query.size() : clauses.tail;
    const QString tail = clauses.tail < 0 ? QString() : QLatin1Char(' ') + query.mid(tailStart);
    if (clauses.where < 0) {
        const QString head = query.left(tailStart).trimmed();
        return head + QStringLiteral(" WHERE ") + restriction + tail;
    }
    const qsizetype conditionStart = clauses.where + 5;
    const QString condition = query.mid(conditionStart, tailStart - conditionStart).trimmed();
    QString result = query.left(clauses.where) + QStringLiteral("WHERE ") + restriction;
    if (!condition.isEmpty())
        result += QStringLiteral(" AND (") + condition + QLatin1Char(')');
    return result + tail;
}

} // namespace vx
