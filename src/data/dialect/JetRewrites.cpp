#include "data/dialect/JetRewrites.h"

#include <QRegularExpression>

namespace vx::dialect {

std::vector<StatementRange> splitStatements(const SqlTokens& tokens) {
    std::vector<StatementRange> ranges;
    size_t begin = 0;
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].isSymbol(u";")) {
            ranges.push_back({begin, i});
            begin = i + 1;
        }
    }
    ranges.push_back({begin, tokens.size()});
    return ranges;
}

std::vector<size_t> significantTokens(const SqlTokens& tokens, StatementRange range) {
    std::vector<size_t> result;
    for (size_t i = range.begin; i < range.end; ++i) {
        if (tokens[i].isSignificant())
            result.push_back(i);
    }
    return result;
}

size_t skipIfExists(const SqlTokens& tokens, const std::vector<size_t>& statement, size_t k) {
    if (k < statement.size() && tokens[statement[k]].isWord(u"IF")) {
        ++k;
        if (k < statement.size() && tokens[statement[k]].isWord(u"NOT"))
            ++k;
        if (k < statement.size() && tokens[statement[k]].isWord(u"EXISTS"))
            ++k;
    }
    return k;
}

std::vector<std::vector<size_t>>
parenthesisedListItems(const SqlTokens& tokens, const std::vector<size_t>& statement, size_t open) {
    std::vector<std::vector<size_t>> items;
    std::vector<size_t> current;
    int depth = 0;
    auto finish = [&] {
        if (!current.empty())
            items.push_back(std::move(current));
        current.clear();
    };
    for (size_t j = open + 1; j < statement.size(); ++j) {
        const SqlToken& token = tokens[statement[j]];
        if (depth == 0 && (token.isSymbol(u",") || token.isSymbol(u")"))) {
            finish();
            if (token.isSymbol(u")"))
                break;
            continue;
        }
        if (token.isSymbol(u"("))
            ++depth;
        else if (token.isSymbol(u")"))
            --depth;
        current.push_back(statement[j]);
    }
    return items;
}

bool isConstraintWord(const SqlToken& token) {
    static const char16_t* const words[] = {
        u"CONSTRAINT", u"PRIMARY",    u"NOT",       u"NULL", u"UNIQUE", u"CHECK",   u"DEFAULT",
        u"COLLATE",    u"REFERENCES", u"GENERATED", u"AS",   u"WITH",   u"FOREIGN", u"IDENTITY"};
    for (const char16_t* word : words) {
        if (token.isWord(word))
            return true;
    }
    return false;
}

bool parseJetDateLiteral(QStringView body, QDateTime& result) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*(?:(\d{1,2})/(\d{1,2})/(\d{2}|\d{4})|(\d{4})-(\d{1,2})-(\d{1,2}))?)"
                       R"(\s*(?:(\d{1,2}):(\d{2})(?::(\d{2}))?\s*([AaPp][Mm])?)?\s*$)"));
    const auto match = pattern.match(body.toString());
    if (!match.hasMatch())
        return false;
    const bool hasDate = match.hasCaptured(1) || match.hasCaptured(4);
    const bool hasTime = match.hasCaptured(7);
    if (!hasDate && !hasTime)
        return false;

    QDate date(1899, 12, 30); // a time on its own lies on the zero day, as the old engine has it
    if (match.hasCaptured(1)) {
        int year = match.captured(3).toInt();
        if (match.captured(3).size() == 2)
            year += year < 30 ? 2000 : 1900;
        date = QDate(year, match.captured(1).toInt(), match.captured(2).toInt());
    } else if (match.hasCaptured(4)) {
        date =
            QDate(match.captured(4).toInt(), match.captured(5).toInt(), match.captured(6).toInt());
    }
    QTime time(0, 0);
    if (hasTime) {
        int hour = match.captured(7).toInt();
        if (match.hasCaptured(10)) {
            if (hour < 1 || hour > 12)
                return false;
            const bool pm = match.captured(10).front().toUpper() == u'P';
            hour = hour % 12 + (pm ? 12 : 0);
        }
        time = QTime(hour, match.captured(8).toInt(),
                     match.hasCaptured(9) ? match.captured(9).toInt() : 0);
    }
    if (!date.isValid() || !time.isValid())
        return false;
    result = QDateTime(date, time);
    return true;
}

void rewriteDateLiterals(SqlTokens& tokens,
                         const std::function<QString(const QDateTime&)>& literal) {
    for (auto& token : tokens) {
        if (token.kind != SqlToken::DateLiteral)
            continue;
        QDateTime value;
        // An unreadable literal stays as written, and the engine reports it.
        if (parseJetDateLiteral(QStringView(token.text).mid(1, token.text.size() - 2), value)) {
            token.text = literal(value);
            token.kind = SqlToken::String;
        }
    }
}

void rewriteBooleanKeywords(SqlTokens& tokens, const QString& trueText, const QString& falseText) {
    const SqlToken* previous = nullptr;
    for (size_t i = 0; i < tokens.size(); ++i) {
        SqlToken& token = tokens[i];
        if (!token.isSignificant())
            continue;
        const bool isTrue = token.isWord(u"TRUE");
        if ((isTrue || token.isWord(u"FALSE")) && !(previous && previous->isSymbol(u"."))) {
            size_t next = i + 1;
            while (next < tokens.size() && !tokens[next].isSignificant())
                ++next;
            const bool qualifierOrCall = next < tokens.size() && (tokens[next].isSymbol(u".") ||
                                                                  tokens[next].isSymbol(u"("));
            if (!qualifierOrCall) {
                token.text = isTrue ? trueText : falseText;
                token.kind = SqlToken::Number;
            }
        }
        previous = &token;
    }
}

void stripSetTargetQualifiers(SqlTokens& tokens, StatementRange range) {
    const auto significant = significantTokens(tokens, range);
    if (significant.empty() || !tokens[significant.front()].isWord(u"UPDATE"))
        return;
    int depth = 0;
    bool inSet = false;
    bool atTarget = false;
    for (size_t k = 0; k < significant.size(); ++k) {
        const SqlToken& token = tokens[significant[k]];
        if (token.isSymbol(u"(")) {
            ++depth;
        } else if (token.isSymbol(u")")) {
            --depth;
        } else if (depth == 0 && token.isWord(u"SET") && !inSet) {
            inSet = atTarget = true;
            continue;
        } else if (depth == 0 && inSet && (token.isWord(u"WHERE") || token.isWord(u"FROM"))) {
            return;
        } else if (depth == 0 && inSet && token.isSymbol(u",")) {
            atTarget = true;
            continue;
        }
        if (atTarget && token.isName() && k + 2 < significant.size() &&
            tokens[significant[k + 1]].isSymbol(u".") && tokens[significant[k + 2]].isName()) {
            // Drop the qualifier, its dot and anything between them and the column.
            for (size_t i = significant[k]; i < significant[k + 2]; ++i)
                eraseToken(tokens[i]);
        }
        atTarget = false;
    }
}

} // namespace vx::dialect
