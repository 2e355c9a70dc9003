#pragma once

#include "data/dialect/SqlLexer.h"

#include <QDateTime>
#include <functional>

namespace vx::dialect {

// Rewrites of the controls' SQL shared by the engines' dialects.

// One statement's tokens: [begin, end) of the whole text's tokens, without the ';'.
struct StatementRange {
    size_t begin = 0;
    size_t end = 0;
};
std::vector<StatementRange> splitStatements(const SqlTokens& tokens);
// Indices of the tokens in the range that are neither blanks nor comments.
std::vector<size_t> significantTokens(const SqlTokens& tokens, StatementRange range);

// Skips "IF EXISTS" / "IF NOT EXISTS" at position k of a statement's significant tokens.
size_t skipIfExists(const SqlTokens& tokens, const std::vector<size_t>& statement, size_t k);
// The items of the parenthesised list whose '(' stands at position `open` of a statement's
// significant tokens, split at its top-level commas (CREATE TABLE's column definitions).
std::vector<std::vector<size_t>>
parenthesisedListItems(const SqlTokens& tokens, const std::vector<size_t>& statement, size_t open);

// Whether a CREATE TABLE list item starting with this word is a table constraint, not a column.
bool isConstraintWord(const SqlToken& token);

// "#03/15/2024#", "#3/15/2024 10:30:00 PM#", "#2024-03-15#", "#10:30#" (the text between the #).
bool parseJetDateLiteral(QStringView body, QDateTime& result);
void rewriteDateLiterals(SqlTokens& tokens,
                         const std::function<QString(const QDateTime&)>& literal);

// The keywords TRUE and FALSE, as values (not column names after a '.', not function calls).
void rewriteBooleanKeywords(SqlTokens& tokens, const QString& trueText, const QString& falseText);

// "UPDATE T SET T.C = 1, [T].[D] = 2" -> "UPDATE T SET C = 1, [D] = 2".
void stripSetTargetQualifiers(SqlTokens& tokens, StatementRange range);

} // namespace vx::dialect
