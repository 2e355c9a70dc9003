#include "query/QueryComposer.h"

#include "data/Error.h"

#include <limits>

namespace vx::query {

namespace {

inline constexpr qint32 InvalidProcedureCall = 5;

// 1-based position of `what` in `text` (0 when absent), as a 16-bit position.
qint16 position(const QString& text, QLatin1StringView what) {
    const qsizetype found = text.indexOf(what, 0, Qt::CaseSensitive) + 1;
    if (found > std::numeric_limits<qint16>::max())
        throw Error(ErrorNumber::Overflow, QStringLiteral("Overflow"));
    return qint16(found);
}

} // namespace

QString keywordClause(const QStringList& pickedKeywords) {
    QString clause;
    for (const QString& keyword : pickedKeywords) {
        if (keyword.isEmpty())
            continue;
        clause += clause.isEmpty() ? QStringLiteral("keyword IN ('") : QStringLiteral(",'");
        clause += keyword + QLatin1Char('\'');
    }
    return clause;
}

QString composeQuery(const QString& formText, const QString& keywordClause) {
    static constexpr QLatin1StringView orderBy("ORDER BY");
    if (formText.isEmpty())
        return {};

    if (keywordClause.isEmpty()) {
        const qint16 order = position(formText, orderBy);
        return order > 0 ? formText.left(order - 1) : formText;
    }

    const QString query = QStringLiteral("SELECT ") + formText.mid(7);
    const qint16 where = position(query, QLatin1StringView("WHERE"));
    if (where == 0)
        throw Error(InvalidProcedureCall,
                    QStringLiteral("Keywords cannot be added to a search without a WHERE clause."));
    const QString head = query.left(where - 1);
    const QString rest = query.mid(where - 1);
    const qint16 order = position(rest, orderBy);
    const QString condition = order > 0 ? rest.left(order - 1) : rest;
    return head + QStringLiteral(",keywords ") + condition +
           QStringLiteral(" and ktitem.itemid = keywords.itemid and ") + keywordClause +
           QStringLiteral(") ");
}

} // namespace vx::query
