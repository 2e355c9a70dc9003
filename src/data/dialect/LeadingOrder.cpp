#include "data/dialect/LeadingOrder.h"

#include "data/dialect/SqlLexer.h"

namespace vx::dialect {

QString orderTerms(const std::vector<SortColumn>& columns) {
    QStringList terms;
    for (const SortColumn& column : columns)
        terms << QString::number(column.column + 1) + (column.descending
                                                           ? QStringLiteral(" DESC NULLS LAST")
                                                           : QStringLiteral(" ASC NULLS FIRST"));
    return terms.join(QStringLiteral(", "));
}

QString withLeadingOrder(const QString& sql, const QString& terms) {
    SqlTokens tokens = tokenize(sql);
    int depth = 0;
    qsizetype orderAt = -1;   // the token "ORDER" of the outermost ORDER BY
    qsizetype lastWord = -1;  // the last significant token, to find "BY" after "ORDER"
    qsizetype lastToken = -1; // the last significant token that is not a closing ";"
    for (qsizetype i = 0; i < qsizetype(tokens.size()); ++i) {
        const SqlToken& token = tokens[size_t(i)];
        if (!token.isSignificant())
            continue;
        if (token.isSymbol(u"("))
            ++depth;
        else if (token.isSymbol(u")"))
            --depth;
        if (!token.isSymbol(u";"))
            lastToken = i;
        if (depth == 0 && token.kind == SqlToken::Word) {
            for (const char16_t* word : {u"UNION", u"INTERSECT", u"EXCEPT", u"LIMIT", u"OFFSET",
                                         u"FETCH", u"FOR", u"INTO"})
                if (token.isWord(word))
                    return {};
            if (token.isWord(u"BY") && lastWord >= 0 && tokens[size_t(lastWord)].isWord(u"ORDER")) {
                if (orderAt >= 0)
                    return {};
                orderAt = i;
            }
        }
        lastWord = i;
    }
    if (depth != 0 || lastToken < 0)
        return {};
    if (orderAt >= 0) {
        tokens[size_t(orderAt)].text += QLatin1Char(' ') + terms + QLatin1Char(',');
        return joinTokens(tokens);
    }
    // Nothing after the statement but its closing ";" and blanks.
    tokens.resize(size_t(lastToken + 1));
    return joinTokens(tokens) + QStringLiteral(" ORDER BY ") + terms;
}

} // namespace vx::dialect
