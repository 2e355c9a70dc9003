#pragma once

#include <QString>
#include <QStringList>

namespace vx::query {

// "keyword IN ('a','b'" for the picked keywords, empty entries skipped; empty when nothing
// usable was picked. Values go in as they stand: the picker only offers dictionary words.
QString keywordClause(const QStringList& pickedKeywords);

// The search text from the form's query and the keyword clause: without keywords the form's
// text up to its first "ORDER BY"; with keywords the form's query joined with the keywords
// table. An empty form text gives an empty result. The hit list sorts on its own, so no ORDER BY
// survives. Throws vx::Error: Overflow when "WHERE" or "ORDER BY" lies beyond position 32767 (hosts
// were built around 16-bit text positions), and an invalid-argument error when keywords were
// picked but the form's text has no "WHERE".
QString composeQuery(const QString& formText, const QString& keywordClause);

} // namespace vx::query
