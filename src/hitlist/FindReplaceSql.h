#pragma once

#include <QString>

namespace vx {

class Connection;
class VXDynaForm;

// Doubles every apostrophe, so a value can stand between apostrophes in SQL.
QString EscapeQuotes(const QString& text);

// The provider's literal prefix or suffix ("LITERAL_PREFIX" / "LITERAL_SUFFIX") of a column type:
// the first best-matching row of the provider types; variable-length text types are looked up as
// fixed-length text. Empty when there is none.
QString GetLiteralAffix(Connection& connection, int adoType, const QString& which);

// The current query from its first "WHERE" (letter case as written) to its end. Throws vx::Error
// when there is none: without it a replacement could not be kept to the query's documents.
QString GetQueryWhere(const QString& query);

// The select a single replacement walks: the group table's item id and every field of the record
// form under its caption.
QString singleReplaceSelect(VXDynaForm& form, const QString& groupTable);

// Replace All's statements over the group table, kept to the documents of the current query.
struct ReplaceAllStatements {
    QString condition; // " WHERE T.C=<find> AND itemid IN (SELECT T.itemid FROM KTITEM, T <W>)"
    QString update;    // "UPDATE T SET T.C=<replacement>" + condition
    QString count;     // "SELECT * FROM T" + condition
};

struct ReplaceAllTerms {
    QString groupTable;
    QString column;
    QString literalPrefix;
    QString literalSuffix;
    QString findText;    // as the user means it; quotes are doubled here
    QString replaceText; // the same
    QString queryWhere;  // GetQueryWhere of the current query
};

ReplaceAllStatements buildReplaceAll(const ReplaceAllTerms& terms);

} // namespace vx
