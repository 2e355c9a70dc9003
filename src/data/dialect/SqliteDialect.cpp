#include "data/dialect/SqliteDialect.h"

#include "data/DataType.h"
#include "data/dialect/JetRewrites.h"

namespace vx {

namespace {

using namespace dialect;

using Indices = std::vector<size_t>;

bool isPlainName(const QString& name) {
    if (name.isEmpty() || name.front().isDigit())
        return false;
    for (QChar c : name) {
        if (!c.isLetterOrNumber() && c != u'_')
            return false;
    }
    return true;
}

// Index names are per table in the controls' SQL but database-wide here. A name that already
// carries its table's name is taken to be unique as it stands.
void renameIndexForTable(SqlToken& index, const SqlToken& table) {
    if (index.name().contains(table.name(), Qt::CaseInsensitive))
        return;
    const QString name = index.name() + u'_' + table.name();
    index.text = isPlainName(name) ? name : quoteName(name);
    index.kind = isPlainName(name) ? SqlToken::Word : SqlToken::QuotedName;
}

void eraseRange(SqlTokens& tokens, size_t from, size_t to) {
    for (size_t i = from; i < to; ++i)
        eraseToken(tokens[i]);
}

// Position in `s` after the optional "IF NOT EXISTS" / "IF EXISTS" at k.
// CREATE [UNIQUE] INDEX name ON T (c) [WITH PRIMARY | WITH DISALLOW NULL | WITH IGNORE NULL]
void rewriteCreateIndex(SqlTokens& tokens, const Indices& s) {
    size_t k = 1;
    if (k < s.size() && tokens[s[k]].isWord(u"UNIQUE"))
        ++k;
    if (k >= s.size() || !tokens[s[k]].isWord(u"INDEX"))
        return;
    k = skipIfExists(tokens, s, k + 1);
    if (k + 2 >= s.size() || !tokens[s[k]].isName() || !tokens[s[k + 1]].isWord(u"ON") ||
        !tokens[s[k + 2]].isName())
        return;
    renameIndexForTable(tokens[s[k]], tokens[s[k + 2]]);

    int depth = 0;
    for (size_t j = k + 3; j < s.size(); ++j) {
        const SqlToken& token = tokens[s[j]];
        if (token.isSymbol(u"("))
            ++depth;
        else if (token.isSymbol(u")"))
            --depth;
        else if (depth == 0 && token.isWord(u"WITH")) {
            // The index options have no counterpart; the key is found from the unique index.
            eraseRange(tokens, s[j - 1] + 1, s.back() + 1);
            return;
        }
    }
}

// DROP INDEX name ON T -> DROP INDEX name_T
void rewriteDropIndex(SqlTokens& tokens, const Indices& s) {
    const size_t k = skipIfExists(tokens, s, 2);
    if (k + 2 < s.size() && tokens[s[k]].isName() && tokens[s[k + 1]].isWord(u"ON") &&
        tokens[s[k + 2]].isName()) {
        renameIndexForTable(tokens[s[k]], tokens[s[k + 2]]);
        eraseRange(tokens, s[k] + 1, s[k + 2] + 1);
    }
}

struct ColumnDefinition {
    Indices tokens;     // significant tokens of the definition
    size_t typeEnd = 1; // tokens[1, typeEnd) spell the declared type
    DeclaredType type;
    bool hasCollate = false;
    bool hasPrimaryKey = false;
};

ColumnDefinition readColumnDefinition(const SqlTokens& tokens, Indices def) {
    ColumnDefinition column;
    column.tokens = std::move(def);
    const Indices& s = column.tokens;
    size_t j = 1;
    while (j < s.size() && tokens[s[j]].kind == SqlToken::Word && !isConstraintWord(tokens[s[j]]))
        ++j;
    if (j < s.size() && j > 1 && tokens[s[j]].isSymbol(u"(")) {
        while (j < s.size() && !tokens[s[j]].isSymbol(u")"))
            ++j;
        j = std::min(j + 1, s.size());
    }
    column.typeEnd = j;
    QString declared;
    if (j > 1) {
        for (size_t i = s[1]; i <= s[j - 1]; ++i)
            declared += tokens[i].text;
    }
    column.type = parseDeclaredType(declared);
    for (size_t i = j; i < s.size(); ++i) {
        column.hasCollate = column.hasCollate || tokens[s[i]].isWord(u"COLLATE");
        column.hasPrimaryKey = column.hasPrimaryKey || tokens[s[i]].isWord(u"PRIMARY");
    }
    return column;
}

// A Jet autoincrement column becomes the engine's own: an integer key filled on insert.
void makeAutoIncrementKey(SqlTokens& tokens, const ColumnDefinition& column) {
    const Indices& s = column.tokens;
    tokens[s[1]].text = QStringLiteral("INTEGER PRIMARY KEY AUTOINCREMENT");
    eraseRange(tokens, s[1] + 1, s[column.typeEnd - 1] + 1);
    for (size_t i = column.typeEnd; i + 1 < s.size(); ++i) {
        if (tokens[s[i]].isWord(u"PRIMARY") && tokens[s[i + 1]].isWord(u"KEY")) {
            size_t from = s[i];
            if (i >= column.typeEnd + 2 && tokens[s[i - 2]].isWord(u"CONSTRAINT"))
                from = s[i - 2];
            eraseRange(tokens, from, s[i + 1] + 1);
        }
    }
}

void eraseCompression(SqlTokens& tokens, const ColumnDefinition& column) {
    const Indices& s = column.tokens;
    for (size_t i = column.typeEnd; i + 1 < s.size(); ++i) {
        if (tokens[s[i]].isWord(u"WITH") &&
            (tokens[s[i + 1]].isWord(u"COMPRESSION") || tokens[s[i + 1]].isWord(u"COMP")))
            eraseRange(tokens, s[i], s[i + 1] + 1);
    }
}

void rewriteCreateTable(SqlTokens& tokens, const Indices& s) {
    size_t k = 1;
    if (tokens[s[k]].isWord(u"TEMP") || tokens[s[k]].isWord(u"TEMPORARY"))
        ++k;
    if (k >= s.size() || !tokens[s[k]].isWord(u"TABLE"))
        return;
    k = skipIfExists(tokens, s, k + 1);
    // The table's name, perhaps qualified, then the column list ("AS SELECT" has none).
    if (k + 2 < s.size() && tokens[s[k + 1]].isSymbol(u"."))
        k += 2;
    ++k;
    if (k >= s.size() || !tokens[s[k]].isSymbol(u"("))
        return;

    std::vector<ColumnDefinition> columns;
    bool tableHasKey = false;
    Indices current;
    auto finish = [&] {
        if (current.empty())
            return;
        const SqlToken& first = tokens[current.front()];
        if (first.kind == SqlToken::Word && isConstraintWord(first)) {
            for (size_t i : current)
                tableHasKey = tableHasKey || tokens[i].isWord(u"PRIMARY");
        } else {
            columns.push_back(readColumnDefinition(tokens, current));
        }
        current.clear();
    };
    for (Indices& item : parenthesisedListItems(tokens, s, k)) {
        current = std::move(item);
        finish();
    }

    int autoIncrementColumns = 0;
    for (const auto& column : columns) {
        if (column.type.autoIncrement)
            ++autoIncrementColumns;
        else
            tableHasKey = tableHasKey || column.hasPrimaryKey;
    }
    for (const auto& column : columns) {
        eraseCompression(tokens, column);
        if (column.type.autoIncrement && !tableHasKey && autoIncrementColumns == 1)
            makeAutoIncrementKey(tokens, column);
        // Text compares without regard to case, as the controls expect of the repository.
        if (isTextType(column.type.type) && !column.hasCollate && column.typeEnd > 1)
            tokens[column.tokens.back()].text += QStringLiteral(" COLLATE NOCASE");
    }
}

} // namespace

QString SqliteDialect::rewrite(const QString& sql) const {
    SqlTokens tokens = tokenize(sql);
    rewriteDateLiterals(tokens, [](const QDateTime& value) {
        return u'\'' + value.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + u'\'';
    });
    rewriteBooleanKeywords(tokens, QStringLiteral("-1"), QStringLiteral("0"));
    for (const StatementRange range : splitStatements(tokens)) {
        const Indices s = significantTokens(tokens, range);
        if (s.size() < 2)
            continue;
        const SqlToken& first = tokens[s[0]];
        if (first.isWord(u"UPDATE")) {
            stripSetTargetQualifiers(tokens, range);
        } else if (first.isWord(u"CREATE")) {
            const SqlToken& second = tokens[s[1]];
            if (second.isWord(u"TABLE") || second.isWord(u"TEMP") || second.isWord(u"TEMPORARY"))
                rewriteCreateTable(tokens, s);
            else if (second.isWord(u"INDEX") || second.isWord(u"UNIQUE"))
                rewriteCreateIndex(tokens, s);
        } else if (first.isWord(u"DROP") && tokens[s[1]].isWord(u"INDEX")) {
            rewriteDropIndex(tokens, s);
        }
    }
    return joinTokens(tokens);
}

} // namespace vx
