#pragma once

#include <QDate>
#include <QString>

namespace vx::form {

// A text literal: between apostrophes, an apostrophe inside doubled.
QString sqlText(const QString& text);

// "#mm/dd/yyyy#"; the data layer's dialect step turns it into what the engine takes.
QString sqlDate(const QDate& date);

// A user's search text as a LIKE pattern: * and ? become % and _, while a literal %, _ or the
// escape character itself is escaped with a backslash.
struct LikePattern {
    QString pattern;
    bool hasWildcards = false; // the user typed * or ?
    bool needsEscape = false;  // the pattern holds escaped characters
};
LikePattern likePattern(const QString& text);

// "<column> LIKE '<pattern>'" with the ESCAPE clause when the pattern needs it.
QString likeCondition(const QString& column, const QString& pattern, bool needsEscape);

} // namespace vx::form
