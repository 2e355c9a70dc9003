#include "data/dialect/SqlLexer.h"

namespace vx::dialect {

namespace {

bool isWordStart(QChar c) {
    return c.isLetter() || c == u'_';
}
bool isWordPart(QChar c) {
    return c.isLetterOrNumber() || c == u'_' || c == u'$';
}

// Characters a date literal may hold between its two '#'.
bool isDateLiteralChar(QChar c) {
    return c.isDigit() || c == u'/' || c == u'-' || c == u':' || c == u'.' || c == u' ' ||
           c == u'A' || c == u'a' || c == u'P' || c == u'p' || c == u'M' || c == u'm';
}

// Position after a run quoted by `close`, where a doubled `close` stands for one.
qsizetype endOfQuoted(const QString& sql, qsizetype start, QChar close, bool doubling) {
    qsizetype i = start + 1;
    while (i < sql.size()) {
        if (sql[i] == close) {
            if (doubling && i + 1 < sql.size() && sql[i + 1] == close) {
                i += 2;
                continue;
            }
            return i + 1;
        }
        ++i;
    }
    return sql.size(); // unterminated: the engine reports it
}

qsizetype endOfNumber(const QString& sql, qsizetype i) {
    while (i < sql.size() && (sql[i].isDigit() || sql[i] == u'.'))
        ++i;
    if (i < sql.size() && (sql[i] == u'e' || sql[i] == u'E')) {
        qsizetype j = i + 1;
        if (j < sql.size() && (sql[j] == u'+' || sql[j] == u'-'))
            ++j;
        if (j < sql.size() && sql[j].isDigit()) {
            i = j;
            while (i < sql.size() && sql[i].isDigit())
                ++i;
        }
    }
    return i;
}

qsizetype endOfDateLiteral(const QString& sql, qsizetype start) {
    constexpr qsizetype longest = 40;
    for (qsizetype i = start + 1; i < sql.size() && i - start <= longest; ++i) {
        if (sql[i] == u'#')
            return i > start + 1 ? i + 1 : -1;
        if (!isDateLiteralChar(sql[i]))
            return -1;
    }
    return -1;
}

} // namespace

QString SqlToken::name() const {
    if (kind != QuotedName || text.size() < 2)
        return text;
    const QChar open = text.front();
    const QChar close = open == u'[' ? u']' : open;
    QString inner = text.mid(1, text.size() - (text.back() == close ? 2 : 1));
    if (open != u'[')
        inner.replace(QString(2, close), QString(close));
    return inner;
}

SqlTokens tokenize(const QString& sql) {
    SqlTokens tokens;
    tokens.reserve(size_t(sql.size() / 3 + 1));
    qsizetype i = 0;
    const qsizetype n = sql.size();
    auto push = [&](SqlToken::Kind kind, qsizetype end) {
        tokens.push_back({kind, sql.mid(i, end - i)});
        i = end;
    };
    while (i < n) {
        const QChar c = sql[i];
        const QChar next = i + 1 < n ? sql[i + 1] : QChar();
        if (c.isSpace()) {
            qsizetype end = i;
            while (end < n && sql[end].isSpace())
                ++end;
            push(SqlToken::Space, end);
        } else if (c == u'-' && next == u'-') {
            qsizetype end = sql.indexOf(u'\n', i);
            push(SqlToken::Comment, end < 0 ? n : end);
        } else if (c == u'/' && next == u'*') {
            qsizetype end = sql.indexOf(QStringLiteral("*/"), i + 2);
            push(SqlToken::Comment, end < 0 ? n : end + 2);
        } else if (c == u'\'') {
            push(SqlToken::String, endOfQuoted(sql, i, u'\'', true));
        } else if (c == u'[') {
            push(SqlToken::QuotedName, endOfQuoted(sql, i, u']', false));
        } else if (c == u'"' || c == u'`') {
            push(SqlToken::QuotedName, endOfQuoted(sql, i, c, true));
        } else if (isWordStart(c)) {
            qsizetype end = i + 1;
            while (end < n && isWordPart(sql[end]))
                ++end;
            push(SqlToken::Word, end);
        } else if (c.isDigit() || (c == u'.' && next.isDigit())) {
            push(SqlToken::Number, endOfNumber(sql, i));
        } else if (c == u'#') {
            const qsizetype end = endOfDateLiteral(sql, i);
            push(end > 0 ? SqlToken::DateLiteral : SqlToken::Symbol, end > 0 ? end : i + 1);
        } else {
            static const QString pairs[] = {QStringLiteral("<>"), QStringLiteral("<="),
                                            QStringLiteral(">="), QStringLiteral("!="),
                                            QStringLiteral("||"), QStringLiteral("==")};
            qsizetype end = i + 1;
            for (const QString& pair : pairs) {
                if (QStringView(sql).mid(i, 2) == pair) {
                    end = i + 2;
                    break;
                }
            }
            push(SqlToken::Symbol, end);
        }
    }
    return tokens;
}

QString joinTokens(const SqlTokens& tokens) {
    QString result;
    qsizetype size = 0;
    for (const auto& token : tokens)
        size += token.text.size();
    result.reserve(size);
    for (const auto& token : tokens)
        result += token.text;
    return result;
}

QString quoteName(const QString& name) {
    QString quoted = name;
    quoted.replace(u'"', QStringLiteral("\"\""));
    return u'"' + quoted + u'"';
}

} // namespace vx::dialect
