#include "data/dialect/PostgresDialect.h"

#include "data/dialect/JetRewrites.h"

#include <QHash>
#include <optional>

namespace vx {

const QString PostgresDialect::collationName = QStringLiteral("nocase");
const QString PostgresDialect::yesNoDomain = QStringLiteral("yesno");

namespace {

using namespace dialect;

using Indices = std::vector<size_t>;

// What the statements of one text need besides themselves.
struct Extras {
    bool collation = false;
    bool yesNo = false;
};

// A declared name to keep as a comment, read once the names are converted.
struct DeclaredName {
    size_t tableFirst = 0; // tokens spelling the table (perhaps schema-qualified)
    size_t tableLast = 0;
    std::optional<size_t> column;
    QString declared;
};

// PostgreSQL folds unquoted names to lower case, ASCII letters only.
QString foldedName(const QString& name) {
    QString folded = name;
    for (QChar& c : folded) {
        if (c >= u'A' && c <= u'Z')
            c = QChar(c.unicode() + 32);
    }
    return folded;
}

bool isBracketed(const SqlToken& token) {
    return token.kind == SqlToken::QuotedName && token.text.startsWith(u'[');
}

// The name as the server will store it when the statement runs.
QString storedName(const SqlToken& token) {
    if (token.kind == SqlToken::Word)
        return foldedName(token.text);
    return isBracketed(token) ? token.name().toLower() : token.name();
}

void eraseRange(SqlTokens& tokens, size_t from, size_t to) {
    for (size_t i = from; i < to; ++i)
        eraseToken(tokens[i]);
}

// Position in `s` of the ')' matching the '(' at k, or s.size().
size_t matchingParenthesis(const SqlTokens& tokens, const Indices& s, size_t k) {
    int depth = 0;
    for (size_t j = k; j < s.size(); ++j) {
        if (tokens[s[j]].isSymbol(u"("))
            ++depth;
        else if (tokens[s[j]].isSymbol(u")") && --depth == 0)
            return j;
    }
    return s.size();
}

// The native type for a Jet type name ("VARCHAR", "DOUBLE PRECISION" ...) and its arguments;
// nothing for names the server knows as they are.
struct NativeType {
    QString text;
    bool collatable = false;
    bool yesNo = false;
};

std::optional<NativeType> nativeType(const QString& name, const QStringList& arguments) {
    auto is = [&](std::initializer_list<const char16_t*> names) {
        for (const char16_t* candidate : names) {
            if (name == QStringView(candidate))
                return true;
        }
        return false;
    };
    const QString size = arguments.value(0);
    if (is({u"LONG", u"INTEGER", u"INT", u"INT4"}))
        return NativeType{QStringLiteral("integer")};
    if (is({u"COUNTER", u"AUTOINCREMENT", u"IDENTITY"}))
        return NativeType{QStringLiteral("serial")};
    if (is({u"SHORT", u"SMALLINT", u"INT2", u"BYTE", u"TINYINT"}))
        return NativeType{QStringLiteral("smallint")};
    if (is({u"DOUBLE", u"FLOAT", u"DOUBLE PRECISION", u"FLOAT8", u"NUMBER"}))
        return NativeType{QStringLiteral("double precision")};
    if (is({u"SINGLE", u"REAL", u"FLOAT4"}))
        return NativeType{QStringLiteral("real")};
    if (is({u"CURRENCY", u"MONEY"}))
        return NativeType{QStringLiteral("numeric(19,4)")};
    // Stored to the second, as the old engine's dates are.
    if (is({u"DATETIME", u"DATE", u"TIME", u"TIMESTAMP"}))
        return NativeType{QStringLiteral("timestamp(0)")};
    if (is({u"YESNO", u"BIT", u"LOGICAL", u"LOGICAL1", u"BOOLEAN"}))
        return NativeType{PostgresDialect::yesNoDomain, false, true};
    if (is({u"VARCHAR", u"TEXT", u"NVARCHAR", u"STRING", u"ALPHANUMERIC", u"CHAR VARYING",
            u"CHARACTER VARYING"}))
        return size.isEmpty() ? NativeType{QStringLiteral("text"), true}
                              : NativeType{QStringLiteral("varchar(%1)").arg(size), true};
    if (is({u"CHAR", u"NCHAR", u"CHARACTER"}))
        return NativeType{
            QStringLiteral("char(%1)").arg(size.isEmpty() ? QStringLiteral("1") : size), true};
    if (is({u"LONGTEXT", u"MEMO", u"NOTE", u"NTEXT", u"LONGCHAR"}))
        return NativeType{QStringLiteral("text"), true};
    if (is({u"GUID", u"UNIQUEIDENTIFIER"}))
        return NativeType{QStringLiteral("uuid")};
    if (is({u"LONGBINARY", u"OLEOBJECT", u"GENERAL", u"IMAGE", u"BINARY", u"VARBINARY"}))
        return NativeType{QStringLiteral("bytea")};
    return std::nullopt;
}

// One column definition "[name] TYPE(args) constraints" at s[0..]: the type becomes native.
void rewriteColumnDefinition(SqlTokens& tokens, const Indices& s, bool caseInsensitive,
                             Extras& extras, const QString& typePrefix = {}) {
    if (s.size() < 2)
        return;
    size_t j = 1;
    QStringList words;
    while (j < s.size() && tokens[s[j]].kind == SqlToken::Word && !isConstraintWord(tokens[s[j]]))
        words << tokens[s[j++]].text.toUpper();
    if (words.isEmpty())
        return;
    QStringList arguments;
    if (j < s.size() && tokens[s[j]].isSymbol(u"(")) {
        const size_t close = matchingParenthesis(tokens, s, j);
        for (size_t a = j + 1; a < close; ++a) {
            if (tokens[s[a]].kind == SqlToken::Number)
                arguments << tokens[s[a]].text;
        }
        j = std::min(close + 1, s.size());
    }
    bool hasCollate = false;
    for (size_t i = j; i < s.size(); ++i) {
        hasCollate = hasCollate || tokens[s[i]].isWord(u"COLLATE");
        // Jet's Unicode compression has no counterpart.
        if (i + 1 < s.size() && tokens[s[i]].isWord(u"WITH") &&
            (tokens[s[i + 1]].isWord(u"COMPRESSION") || tokens[s[i + 1]].isWord(u"COMP")))
            eraseRange(tokens, s[i], s[i + 1] + 1);
    }
    const auto native = nativeType(words.join(u' '), arguments);
    if (!native)
        return;
    QString text = typePrefix + native->text;
    if (native->collatable && caseInsensitive && !hasCollate) {
        text += QStringLiteral(" COLLATE ") + PostgresDialect::collationName;
        extras.collation = true;
    }
    extras.yesNo = extras.yesNo || native->yesNo;
    tokens[s[1]].text = text;
    eraseRange(tokens, s[1] + 1, s[j - 1] + 1);
}

void rememberColumnName(const SqlTokens& tokens, size_t nameToken, size_t tableFirst,
                        size_t tableLast, std::vector<DeclaredName>& declared) {
    const SqlToken& name = tokens[nameToken];
    if (name.isName() && storedName(name) != name.name())
        declared.push_back({tableFirst, tableLast, nameToken, name.name()});
}

// CREATE TABLE [T] ([a] LONG, [b] VARCHAR(20), CONSTRAINT ... )
void rewriteCreateTable(SqlTokens& tokens, const Indices& s, bool caseInsensitive, Extras& extras,
                        std::vector<DeclaredName>& declared) {
    size_t k = 1;
    if (tokens[s[k]].isWord(u"TEMP") || tokens[s[k]].isWord(u"TEMPORARY"))
        ++k;
    if (k >= s.size() || !tokens[s[k]].isWord(u"TABLE"))
        return;
    k = skipIfExists(tokens, s, k + 1);
    if (k >= s.size() || !tokens[s[k]].isName())
        return;
    const size_t tableFirst = s[k];
    if (k + 2 < s.size() && tokens[s[k + 1]].isSymbol(u"."))
        k += 2;
    const size_t tableLast = s[k];
    const SqlToken& table = tokens[tableLast];
    if (storedName(table) != table.name())
        declared.push_back({tableFirst, tableLast, std::nullopt, table.name()});
    ++k;
    if (k >= s.size() || !tokens[s[k]].isSymbol(u"("))
        return;

    Indices current;
    auto finish = [&] {
        if (current.empty())
            return;
        const SqlToken& first = tokens[current.front()];
        if (!(first.kind == SqlToken::Word && isConstraintWord(first))) {
            rememberColumnName(tokens, current.front(), tableFirst, tableLast, declared);
            rewriteColumnDefinition(tokens, current, caseInsensitive, extras);
        }
        current.clear();
    };
    for (Indices& item : parenthesisedListItems(tokens, s, k)) {
        current = std::move(item);
        finish();
    }
}

// ALTER TABLE T ADD [COLUMN] c TYPE ... / ALTER TABLE T ALTER [COLUMN] c TYPE
void rewriteAlterTable(SqlTokens& tokens, const Indices& s, bool caseInsensitive, Extras& extras,
                       std::vector<DeclaredName>& declared) {
    size_t k = 2;
    if (k >= s.size() || !tokens[s[k]].isName())
        return;
    const size_t tableFirst = s[k];
    if (k + 2 < s.size() && tokens[s[k + 1]].isSymbol(u"."))
        k += 2;
    const size_t tableLast = s[k];
    ++k;
    if (k >= s.size())
        return;
    const bool add = tokens[s[k]].isWord(u"ADD");
    const bool alter = tokens[s[k]].isWord(u"ALTER");
    if (!add && !alter)
        return;
    ++k;
    if (k < s.size() && tokens[s[k]].isWord(u"COLUMN"))
        ++k;
    if (k >= s.size() || isConstraintWord(tokens[s[k]]))
        return;
    const Indices definition(s.begin() + std::ptrdiff_t(k), s.end());
    if (add)
        rememberColumnName(tokens, definition.front(), tableFirst, tableLast, declared);
    rewriteColumnDefinition(tokens, definition, caseInsensitive, extras,
                            alter ? QStringLiteral("TYPE ") : QString());
}

// Index names are per table in the controls' SQL, per schema here.
void renameIndexForTable(SqlToken& index, const SqlToken& table) {
    index.text = quoteName(storedName(index) + u'_' + storedName(table));
    index.kind = SqlToken::QuotedName;
}

// CREATE [UNIQUE] INDEX name ON T (c) WITH PRIMARY -> ALTER TABLE T ADD PRIMARY KEY (c);
// other options (DISALLOW NULL, IGNORE NULL) have no counterpart and are dropped.
void rewriteCreateIndex(SqlTokens& tokens, const Indices& s) {
    size_t k = 1;
    const bool unique = tokens[s[k]].isWord(u"UNIQUE");
    if (unique)
        ++k;
    if (k >= s.size() || !tokens[s[k]].isWord(u"INDEX"))
        return;
    k = skipIfExists(tokens, s, k + 1);
    if (k + 3 >= s.size() || !tokens[s[k]].isName() || !tokens[s[k + 1]].isWord(u"ON") ||
        !tokens[s[k + 2]].isName())
        return;
    const size_t nameAt = k;
    size_t tableAt = k + 2;
    size_t open = tableAt + 1;
    if (open + 1 < s.size() && tokens[s[open]].isSymbol(u".")) {
        tableAt = open + 1;
        open = tableAt + 1;
    }
    if (open >= s.size() || !tokens[s[open]].isSymbol(u"("))
        return;
    const size_t close = matchingParenthesis(tokens, s, open);
    bool primary = false;
    for (size_t j = close + 1; j + 1 < s.size(); ++j)
        primary = primary || (tokens[s[j]].isWord(u"WITH") && tokens[s[j + 1]].isWord(u"PRIMARY"));
    if (close + 1 < s.size() && tokens[s[close + 1]].isWord(u"WITH"))
        eraseRange(tokens, s[close] + 1, s.back() + 1);

    if (!primary) {
        renameIndexForTable(tokens[s[nameAt]], tokens[s[tableAt]]);
        return;
    }
    tokens[s[0]].text = QStringLiteral("ALTER TABLE ");
    eraseRange(tokens, s[0] + 1, s[k + 2]);
    const bool spaced = s[open] > 0 && tokens[s[open] - 1].kind == SqlToken::Space;
    tokens[s[open]].text =
        spaced ? QStringLiteral("ADD PRIMARY KEY (") : QStringLiteral(" ADD PRIMARY KEY (");
    // A key has no sort order.
    for (size_t j = open + 1; j < close; ++j) {
        if (tokens[s[j]].isWord(u"ASC") || tokens[s[j]].isWord(u"DESC"))
            eraseToken(tokens[s[j]]);
    }
}

// DROP INDEX name ON T -> DROP INDEX name_t
void rewriteDropIndex(SqlTokens& tokens, const Indices& s) {
    const size_t k = skipIfExists(tokens, s, 2);
    if (k + 2 < s.size() && tokens[s[k]].isName() && tokens[s[k + 1]].isWord(u"ON") &&
        tokens[s[k + 2]].isName()) {
        renameIndexForTable(tokens[s[k]], tokens[s[k + 2]]);
        eraseRange(tokens, s[k] + 1, s.back() + 1);
    }
}

// Bracketed names become quoted names in the repository's case; aliases keep their text, and
// so do the references to an alias as a qualifier or in ORDER BY.
void convertNames(SqlTokens& tokens, const Indices& s) {
    QHash<QString, QString> aliases;
    for (size_t k = 1; k < s.size(); ++k) {
        SqlToken& token = tokens[s[k]];
        if (!tokens[s[k - 1]].isWord(u"AS"))
            continue;
        if (token.kind == SqlToken::QuotedName) {
            aliases.insert(token.name().toLower(), token.name());
        } else if (token.kind == SqlToken::Word && foldedName(token.text) != token.text &&
                   k + 1 < s.size() &&
                   (tokens[s[k + 1]].isSymbol(u",") || tokens[s[k + 1]].isWord(u"FROM"))) {
            // A select-list alias such as "AS IndexDate" keeps its case, as the controls read
            // result columns by it ("CAST(x AS INTEGER)" is followed by neither).
            aliases.insert(token.text.toLower(), token.text);
            token.text = quoteName(token.text);
            token.kind = SqlToken::QuotedName;
        }
    }
    int depth = 0;
    int orderByDepth = -1;
    for (size_t k = 0; k < s.size(); ++k) {
        SqlToken& token = tokens[s[k]];
        const bool qualifier = k + 1 < s.size() && tokens[s[k + 1]].isSymbol(u".");
        if (token.isSymbol(u"(")) {
            ++depth;
        } else if (token.isSymbol(u")")) {
            if (--depth < orderByDepth)
                orderByDepth = -1;
        } else if (token.isWord(u"ORDER") && k + 1 < s.size() && tokens[s[k + 1]].isWord(u"BY")) {
            orderByDepth = depth;
        } else if (isBracketed(token)) {
            const QString name = token.name();
            const auto alias = aliases.constFind(name.toLower());
            if (k > 0 && tokens[s[k - 1]].isWord(u"AS"))
                token.text = quoteName(name);
            else if (alias != aliases.constEnd() && (qualifier || orderByDepth >= 0))
                token.text = quoteName(alias.value());
            else
                token.text = quoteName(name.toLower());
        } else if (token.kind == SqlToken::Word && (qualifier || orderByDepth >= 0)) {
            const auto alias = aliases.constFind(token.text.toLower());
            if (alias != aliases.constEnd() && foldedName(alias.value()) != alias.value()) {
                token.text = quoteName(alias.value());
                token.kind = SqlToken::QuotedName;
            }
        }
    }
}

// Position in `s` of the last token of the operand that starts at k.
size_t operandEnd(const SqlTokens& tokens, const Indices& s, size_t k) {
    if (tokens[s[k]].isSymbol(u"("))
        return std::min(matchingParenthesis(tokens, s, k), s.size() - 1);
    if (tokens[s[k]].isName()) {
        while (k + 2 < s.size() && tokens[s[k + 1]].isSymbol(u".") && tokens[s[k + 2]].isName())
            k += 2;
        if (k + 1 < s.size() && tokens[s[k + 1]].isSymbol(u"("))
            return std::min(matchingParenthesis(tokens, s, k + 1), s.size() - 1);
    }
    return k;
}

// LIKE -> ILIKE, the pattern under the database's deterministic collation (the server refuses
// pattern matching under a nondeterministic one; an explicit collation on one operand decides).
void rewriteLike(SqlTokens& tokens, const Indices& s, bool caseInsensitive) {
    for (size_t k = 0; k < s.size(); ++k) {
        SqlToken& token = tokens[s[k]];
        if (!token.isWord(u"LIKE"))
            continue;
        token.text = QStringLiteral("ILIKE");
        if (caseInsensitive && k + 1 < s.size())
            tokens[s[operandEnd(tokens, s, k + 1)]].text += QStringLiteral(" COLLATE \"default\"");
    }
}

QString joinRange(const SqlTokens& tokens, size_t from, size_t to) {
    QString text;
    for (size_t i = from; i <= to; ++i)
        text += tokens[i].text;
    return text;
}

QString quotedString(const QString& text) {
    QString escaped = text;
    escaped.replace(u'\'', QStringLiteral("''"));
    return u'\'' + escaped + u'\'';
}

QString commentStatement(const SqlTokens& tokens, const DeclaredName& name) {
    const QString table = joinRange(tokens, name.tableFirst, name.tableLast).trimmed();
    if (!name.column)
        return QStringLiteral("COMMENT ON TABLE %1 IS %2").arg(table, quotedString(name.declared));
    return QStringLiteral("COMMENT ON COLUMN %1.%2 IS %3")
        .arg(table, tokens[*name.column].text, quotedString(name.declared));
}

QString dateLiteral(const QDateTime& value) {
    const QString format = value.time() == QTime(0, 0) ? QStringLiteral("yyyy-MM-dd")
                                                       : QStringLiteral("yyyy-MM-dd HH:mm:ss");
    return u'\'' + value.toString(format) + QStringLiteral("'::timestamp");
}

} // namespace

PostgresDialect::PostgresDialect(bool caseInsensitiveText)
    : m_caseInsensitiveText(caseInsensitiveText) {}

QString PostgresDialect::rewrite(const QString& sql) const {
    return rewriteStatements(sql).join(QStringLiteral(";\n"));
}

QStringList PostgresDialect::rewriteStatements(const QString& sql) const {
    SqlTokens tokens = tokenize(sql);
    rewriteDateLiterals(tokens, dateLiteral);
    rewriteBooleanKeywords(tokens, QStringLiteral("-1"), QStringLiteral("0"));

    Extras extras;
    QStringList statements;
    for (const StatementRange range : splitStatements(tokens)) {
        Indices s = significantTokens(tokens, range);
        if (s.empty())
            continue;
        std::vector<DeclaredName> declared;
        const SqlToken& first = tokens[s[0]];
        const SqlToken* second = s.size() > 1 ? &tokens[s[1]] : nullptr;
        if (first.isWord(u"UPDATE")) {
            stripSetTargetQualifiers(tokens, range);
        } else if (first.isWord(u"CREATE") && second) {
            if (second->isWord(u"TABLE") || second->isWord(u"TEMP") || second->isWord(u"TEMPORARY"))
                rewriteCreateTable(tokens, s, m_caseInsensitiveText, extras, declared);
            else if (second->isWord(u"INDEX") || second->isWord(u"UNIQUE"))
                rewriteCreateIndex(tokens, s);
        } else if (first.isWord(u"ALTER") && second && second->isWord(u"TABLE")) {
            rewriteAlterTable(tokens, s, m_caseInsensitiveText, extras, declared);
        } else if (first.isWord(u"DROP") && second && second->isWord(u"INDEX")) {
            rewriteDropIndex(tokens, s);
        }
        s = significantTokens(tokens, range);
        convertNames(tokens, s);
        rewriteLike(tokens, s, m_caseInsensitiveText);

        const QString text = joinRange(tokens, range.begin, range.end - 1).trimmed();
        if (!text.isEmpty())
            statements << text;
        for (const DeclaredName& name : declared)
            statements << commentStatement(tokens, name);
    }
    // What the statements rely on, created when missing.
    if (extras.yesNo)
        statements.prepend(QStringLiteral("DO $$BEGIN CREATE DOMAIN %1 AS smallint; "
                                          "EXCEPTION WHEN duplicate_object THEN NULL; END$$")
                               .arg(yesNoDomain));
    if (extras.collation)
        statements.prepend(QStringLiteral("CREATE COLLATION IF NOT EXISTS %1 (provider = icu, "
                                          "locale = 'und-u-ks-level2', deterministic = false)")
                               .arg(collationName));
    return statements;
}

} // namespace vx
