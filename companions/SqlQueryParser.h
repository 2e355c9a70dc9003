#pragma once

#include "session/companions/VXSQLQuery.h"

namespace vx {

// The default query parser. QueryStringWithSecurity keeps a query's items to those without a
// KTSecurity row for the user (a row excludes its user from the item): the condition
// "ktitem.itemid NOT IN (SELECT itemid FROM KTSecurity WHERE UserID = n)" joins the query's own
// WHERE clause (which is kept whole, in parentheses) or becomes its WHERE clause; GROUP BY,
// HAVING, ORDER BY and LIMIT stay at the end. The query keeps its text otherwise, so its
// columns, base tables and updatability and the hit list's use of its WHERE clause stay as they
// were.
//
// Keyword texts reach the query unquoted, so the query is first checked to be sealed: every
// quote and parenthesis closes in order, and nothing in it (comments, a second statement, a set
// operator, dollar quotes, escape strings, parameters) could end the parentheses early or be
// read by an engine differently from how it is read here. A query that is not sealed is
// refused with vx::Error (InvalidArgument) saying why.
class SqlQueryParser : public VXSQLQuery {
    Q_OBJECT

public:
    explicit SqlQueryParser(QObject* parent = nullptr);

    QString QueryStringWithSecurity(const QString& query, qint16& userId) override;
};

} // namespace vx
