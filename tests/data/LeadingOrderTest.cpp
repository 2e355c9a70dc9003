#include "data/dialect/LeadingOrder.h"

#include <gtest/gtest.h>

using namespace vx;
using namespace vx::dialect;

namespace {

TEST(LeadingOrder, TermsNameColumnsByPlaceWithTheRecordSetsNullPlacement) {
    EXPECT_EQ(orderTerms({{0, false}}), QStringLiteral("1 ASC NULLS FIRST"));
    EXPECT_EQ(orderTerms({{4, true}, {0, false}}),
              QStringLiteral("5 DESC NULLS LAST, 1 ASC NULLS FIRST"));
}

TEST(LeadingOrder, GoesAheadOfTheQuerysOwnOrderOrIsAppended) {
    const QString terms = QStringLiteral("2 ASC NULLS FIRST");
    struct Case {
        const char* query;
        const char* expected; // empty: no order can be added
    };
    const Case cases[] = {
        {"SELECT a, b FROM t WHERE a = 1",
         "SELECT a, b FROM t WHERE a = 1 ORDER BY 2 ASC NULLS FIRST"},
        {"SELECT a, b FROM t ;  ", "SELECT a, b FROM t ORDER BY 2 ASC NULLS FIRST"},
        {"SELECT a, b FROM t ORDER BY t.a DESC",
         "SELECT a, b FROM t ORDER BY 2 ASC NULLS FIRST, t.a DESC"},
        {"select a from t order  by a", "select a from t order  by 2 ASC NULLS FIRST, a"},
        // Orders and cuts inside parentheses belong to the inner query.
        {"SELECT * FROM (SELECT a, b FROM t ORDER BY a LIMIT 5) AS q WHERE q.b > 1",
         "SELECT * FROM (SELECT a, b FROM t ORDER BY a LIMIT 5) AS q WHERE q.b > 1 ORDER BY 2 ASC "
         "NULLS FIRST"},
        {"SELECT a FROM t WHERE b IN (SELECT b FROM u UNION SELECT b FROM v)",
         "SELECT a FROM t WHERE b IN (SELECT b FROM u UNION SELECT b FROM v) ORDER BY 2 ASC NULLS "
         "FIRST"},
        // Words in literals and names are not clauses.
        {"SELECT [limit] FROM t WHERE c = 'ORDER BY x'",
         "SELECT [limit] FROM t WHERE c = 'ORDER BY x' ORDER BY 2 ASC NULLS FIRST"},
        {"SELECT a FROM t UNION SELECT a FROM u", ""},
        {"SELECT a FROM t LIMIT 10", ""},
        {"SELECT a FROM t ORDER BY a OFFSET 3", ""},
        {"SELECT a FROM t FOR UPDATE", ""},
        {"SELECT a FROM (t", ""},
        {"", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(withLeadingOrder(QString::fromUtf8(c.query), terms),
                  QString::fromUtf8(c.expected))
            << c.query;
}

} // namespace
