#pragma once

#include "session/companions/VXSQLQuery.h"

namespace vx {

// The default query parser. QueryStringWithSecurity keeps a query's items to those without a
// KTSecurity row for the user (a row excludes its user from the item): the condition
// "ktitem.itemid NOT IN (SELECT itemid FROM KTSecurity WHERE UserID = n)" joins the query's own
// WHERE clause (which is kept whole, in parentheses) or becomes its WHERE clause; GROUP BY,
// HAVING and ORDER BY stay at the end.
class SqlQueryParser : public VXSQLQuery {
    Q_OBJECT

public:
    explicit SqlQueryParser(QObject* parent = nullptr);

    QString QueryStringWithSecurity(const QString& query, qint16& userId) override;
};

} // namespace vx
