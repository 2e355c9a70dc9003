#include "support/EngineDatabase.h"

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

// A server, database or role may read backslashes in quoted texts as escapes, or look names up in
// another schema first; the library's sessions do neither, whatever is configured.
using PostgresSecurity = PostgresDatabase;

TEST_F(PostgresSecurity, BackslashCriteriaMatchNothingOnARoleThatReadsEscapes) {
    const QString database = ConnectionProperties::parse(connectionText).value(u"Database"_s);
    driver().execute(u"CREATE TABLE grp (itemid integer PRIMARY KEY, customer varchar(40))"_s);
    driver().execute(u"INSERT INTO grp VALUES (1, 'acme'), (2, 'globex'), (3, 'A\\B')"_s);
    driver().execute(u"ALTER ROLE CURRENT_USER IN DATABASE \"%1\" SET standard_conforming_strings "
                     "= off"_s.arg(database));
    driver().execute(u"ALTER ROLE CURRENT_USER IN DATABASE \"%1\" SET search_path = pg_temp, "
                     "\"$user\", public"_s.arg(database));
    ASSERT_EQ(count(u"SELECT count(*) FROM pg_db_role_setting s JOIN pg_database d ON d.oid = "
                    "s.setdatabase WHERE d.datname = current_database() AND "
                    "'standard_conforming_strings=off' = ANY(s.setconfig)"_s),
              1);

    Connection connection = connect();
    Driver& session = connection.driver();
    const auto settings = session.select(u"SELECT current_setting('standard_conforming_strings') "
                                         "|| current_setting('search_path') || current_schema()"_s);
    EXPECT_EQ(settings->value(0, 0).toString(), u"on\"public\"public");

    // The form's criterion and a Replace All's condition with the same text, once as the session
    // starts and once after a query turned escapes back on for it.
    const QString criterion = u"'\\'' or 1=1 --'"_s;
    for (const bool turnedOff : {false, true}) {
        if (turnedOff)
            session.select(u"SELECT set_config('standard_conforming_strings', 'off', 1 = 0)"_s);
        EXPECT_EQ(session.select(u"SELECT * FROM grp WHERE LOWER(grp.customer) = "_s + criterion)
                      ->rowCount(),
                  0);
        session.execute(u"UPDATE grp SET customer = 'changed' WHERE customer = "_s + criterion +
                        u" AND itemid IN (SELECT itemid FROM grp)"_s);
        EXPECT_EQ(count(u"SELECT count(*) FROM grp WHERE customer = 'changed'"_s), 0);
        EXPECT_EQ(session.select(u"SELECT itemid FROM grp WHERE customer = 'A\\B'"_s)->rowCount(),
                  1);
    }
}

} // namespace
} // namespace vx::test
