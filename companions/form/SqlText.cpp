#include "companions/form/SqlText.h"

namespace vx::form {

QString sqlText(const QString& text) {
    QString doubled = text;
    doubled.replace(QLatin1Char('\''), QStringLiteral("''"));
    return QLatin1Char('\'') + doubled + QLatin1Char('\'');
}

QString sqlDate(const QDate& date) {
    return QLatin1Char('#') + date.toString(QStringLiteral("MM/dd/yyyy")) + QLatin1Char('#');
}

LikePattern likePattern(const QString& text) {
    LikePattern result;
    result.pattern.reserve(text.size() + 4);
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '*':
            result.pattern += QLatin1Char('%');
            result.hasWildcards = true;
            break;
        case '?':
            result.pattern += QLatin1Char('_');
            result.hasWildcards = true;
            break;
        case '%':
        case '_':
        case '\\':
            result.pattern += QLatin1Char('\\');
            result.pattern += c;
            result.needsEscape = true;
            break;
        default:
            result.pattern += c;
            break;
        }
    }
    return result;
}

QString likeCondition(const QString& column, const QString& pattern, bool needsEscape) {
    QString condition = column + QStringLiteral(" LIKE ") + sqlText(pattern);
    if (needsEscape)
        condition += QStringLiteral(" ESCAPE '\\'");
    return condition;
}

} // namespace vx::form
