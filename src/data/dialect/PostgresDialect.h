#pragma once

#include "data/dialect/SqlDialect.h"

#include <QStringList>

namespace vx {

// The server engine's dialect. Tables and columns live in lower case: bracketed names are
// lower-cased (unquoted ones the server folds itself), while aliases ("AS [Item ID]") keep
// their text. A created table and its columns carry their declared spelling as a comment, so
// the schema lists can report "KTSecurity" as it was declared. Jet types become native ones,
// Yes/No columns the `yesno` domain over smallint, "WITH PRIMARY" a primary key, "#date#" a
// timestamp, TRUE/FALSE -1/0.
//
// Text compares without regard to case, as in the old engine: text columns get the
// nondeterministic collation `nocase`. The server refuses LIKE on such a collation, so LIKE
// becomes ILIKE with the pattern under the database's own collation, which keeps matching
// case-blind and lets the server run it.
class PostgresDialect : public SqlDialect {
public:
    // `caseInsensitiveText` is false on a server without ICU collations; text then compares
    // by case.
    explicit PostgresDialect(bool caseInsensitiveText = true);

    // The statements joined by ";\n".
    QString rewrite(const QString& sql) const override;
    // The statements one by one, including what they need created first (the collation, the
    // domain) and the comments that keep declared names.
    QStringList rewriteStatements(const QString& sql) const;

    static const QString collationName; // "nocase"
    static const QString yesNoDomain;   // "yesno"

private:
    bool m_caseInsensitiveText;
};

} // namespace vx
