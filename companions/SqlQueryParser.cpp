#include "companions/SqlQueryParser.h"

#include <QRegularExpression>

namespace vx {

namespace {

bool isNameChar(QChar c) {
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

// The word at `at` (letter case ignored), standing alone.
bool wordAt(const QString& text, qsizetype at, QLatin1StringView word) {
    if (at + word.size() > text.size())
        return false;
    if (QStringView(text).mid(at, word.size()).compare(word, Qt::CaseInsensitive) != 0)
        return false;
    if (at > 0 && isNameChar(text.at(at - 1)))
        return false;
    const qsizetype after = at + word.size();
    return after >= text.size() || !isNameChar(text.at(after));
}

// "ORDER BY" / "GROUP BY" with any blanks between the words.
bool clauseAt(const QString& text, qsizetype at, QLatin1StringView first) {
    if (!wordAt(text, at, first))
        return false;
    qsizetype next = at + first.size();
    while (next < text.size() && text.at(next).isSpace())
        ++next;
    return next > at + first.size() && wordAt(text, next, QLatin1StringView("BY"));
}

struct Clauses {
    qsizetype where = -1; // start of "WHERE"
    qsizetype tail = -1;  // start of GROUP BY / HAVING / ORDER BY after it
};

// Positions of the main statement's clauses; text in quotes, brackets or parentheses (sub-
// queries) is skipped.
Clauses findClauses(const QString& text) {
    Clauses found;
    int depth = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\'') || c == QLatin1Char('"') || c == QLatin1Char('[')) {
            const QChar close = c == QLatin1Char('[') ? QLatin1Char(']') : c;
            const qsizetype end = text.indexOf(close, i + 1);
            if (end < 0)
                break;
            i = end;
            continue;
        }
        if (c == QLatin1Char('(')) {
            ++depth;
            continue;
        }
        if (c == QLatin1Char(')')) {
            --depth;
            continue;
        }
        if (depth != 0)
            continue;
        if (found.where < 0 && found.tail < 0 && wordAt(text, i, QLatin1StringView("WHERE"))) {
            found.where = i;
        } else if (found.tail < 0 && (clauseAt(text, i, QLatin1StringView("ORDER")) ||
                                      clauseAt(text, i, QLatin1StringView("GROUP")) ||
                                      wordAt(text, i, QLatin1StringView("HAVING")))) {
            found.tail = i;
            break;
        }
    }
    return found;
}

} // namespace

SqlQueryParser::SqlQueryParser(QObject* parent)
    : VXSQLQuery(parent) {}

QString SqlQueryParser::QueryStringWithSecurity(const QString& query, qint16& userId) {
    static const QRegularExpression itemTable(QStringLiteral("\\bktitem\\b"),
                                              QRegularExpression::CaseInsensitiveOption);
    // Qualified when the query joins KTItem with a group table: both have an itemid.
    const QString item = itemTable.match(query).hasMatch() ? QStringLiteral("ktitem.itemid")
                                                           : QStringLiteral("itemid");
    const QString restriction = item +
                                QStringLiteral(" NOT IN (SELECT itemid FROM KTSecurity WHERE "
                                               "UserID = ") +
                                QString::number(userId) + QLatin1Char(')');

    const Clauses clauses = findClauses(query);
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
