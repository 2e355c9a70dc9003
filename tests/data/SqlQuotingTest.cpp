#include "data/SqlQuoting.h"

#include "ScratchDatabase.h"
#include "data/Recordset.h"

namespace vx::test {
namespace {

// Values from rows that other users write, put into statements: each stays one value or one
// name, whatever it holds.
const QString hostileTexts[] = {u"x' OR '1'='1"_s,          u"'; DELETE FROM t; --"_s,
                                u"\\' or 1=1 --"_s,         u"''"_s,
                                u"a'); DROP TABLE t; --"_s, u"[x]"_s,
                                u"it's \"quoted\""_s,       u"\u2019 curly"_s};

TEST(SqlQuoting, HostileTextsStayOneValue) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    connection.execute(u"CREATE TABLE t (id LONG, name VARCHAR(60))"_s);
    int id = 0;
    for (const QString& text : hostileTexts)
        connection.execute(
            u"INSERT INTO t (id, name) VALUES (%1, %2)"_s.arg(++id).arg(sqlTextLiteral(text)));
    id = 0;
    for (const QString& text : hostileTexts) {
        Recordset rows;
        rows.open(u"SELECT * FROM t WHERE name = "_s + sqlTextLiteral(text), connection);
        ASSERT_FALSE(rows.eof()) << text.toStdString();
        EXPECT_EQ(rows.recordCount(), 1) << text.toStdString();
        EXPECT_EQ(rows.value(u"id"_s).toInt(), ++id);
        EXPECT_EQ(rows.value(u"name"_s).toString(), text);
    }
    EXPECT_EQ(errorNumberOf([] { sqlTextLiteral(u"a\0b"_s); }), ErrorNumber::InvalidArgument);
}

TEST(SqlQuoting, NamesThatWouldCloseTheirBracketsAreRefused) {
    ScratchDatabase scratch;
    Connection connection = scratch.connect();
    connection.execute(u"CREATE TABLE "_s + bracketedName(u"Group Table"_s) + u" ("_s +
                       bracketedName(u"Customer's Name"_s) + u" VARCHAR(20))"_s);
    Recordset rows;
    rows.open(u"SELECT [Customer's Name] FROM [Group Table]"_s, connection);
    EXPECT_EQ(rows.fieldCount(), 1);

    for (const QString& name : {u"x] VARCHAR(5), [y"_s, u"a]b"_s, u"[a"_s, u"line\nbreak"_s,
                                u"nul\0name"_s, u"tab\tname"_s}) {
        try {
            bracketedName(name);
            ADD_FAILURE() << "accepted " << name.toStdString();
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), ErrorNumber::InvalidArgument);
            EXPECT_FALSE(error.description().contains(u'\n')) << "the name is shown escaped";
            EXPECT_FALSE(error.description().contains(QChar(0)));
        }
    }
}

} // namespace
} // namespace vx::test
