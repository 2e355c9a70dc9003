#include "companions/SecurityManager.h"
#include "companions/SqlQueryParser.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

using namespace vx;

namespace {

class SecurityTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;
    Connection connection;

    void SetUp() override { connection.open(sample.connectionText()); }

    QList<qint32> usersOf(qint32 item) {
        Recordset rows;
        rows.open(
            QStringLiteral("select * from KTSecurity where itemid = %1 order by UserID").arg(item),
            connection);
        QList<qint32> values;
        for (; !rows.eof(); rows.moveNext())
            values << rows.value(QStringLiteral("UserID")).toInt();
        return values;
    }
};

} // namespace

TEST_F(SecurityTest, AnItemsAccessListIsReplacedWholeOrNotAtAll) {
    SecurityManager manager;
    qint32 item = 7; // a sample document with excluded users
    EXPECT_THROW(manager.SelectItem(item), Error) << "no group before Init";
    const QList<qint32> before = usersOf(item);
    ASSERT_FALSE(before.isEmpty());

    // Without KillItem the change is abandoned at Done; with it, it is written.
    for (const bool kill : {false, true}) {
        manager.setInit(sample.initFilePath());
        EXPECT_EQ(manager.Init(), sample.initFilePath());
        manager.SelectItem(item);
        manager.DeleteItemSecurity();
        EXPECT_TRUE(manager.AddItemSecurity(5, item));
        EXPECT_TRUE(manager.AddItemSecurity(3, item));
        EXPECT_TRUE(manager.AddItemSecurity(3, item)) << "a user already listed is fine";
        if (kill)
            manager.KillItem();
        manager.Done();
        EXPECT_EQ(usersOf(item), kill ? QList<qint32>({3, 5}) : before);
        EXPECT_FALSE(manager.AddItemSecurity(3, item)) << "nothing selected after Done";
    }

    // Selecting an item with no rows and clearing it writes nothing for it.
    manager.setInit(sample.initFilePath());
    qint32 open = 1;
    manager.SelectItem(open);
    manager.DeleteItemSecurity();
    manager.KillItem();
    EXPECT_TRUE(usersOf(open).isEmpty());
}

TEST(SqlQueryParser, AddsTheRestrictionAroundTheQuerysOwnCondition) {
    SqlQueryParser parser;
    qint16 user = 3;
    const QString restriction =
        QStringLiteral("ktitem.itemid NOT IN (SELECT itemid FROM KTSecurity WHERE UserID = 3)");
    // The condition stays whole: an OR in it must not escape the restriction.
    EXPECT_EQ(parser.QueryStringWithSecurity(
                  "SELECT * FROM ktitem WHERE a = 1 OR b = 'x WHERE y' ORDER BY itemid", user),
              "SELECT * FROM ktitem WHERE " + restriction +
                  " AND (a = 1 OR b = 'x WHERE y') ORDER BY itemid");
    EXPECT_EQ(parser.QueryStringWithSecurity("select * from KTItem order  by itemid", user),
              "select * from KTItem WHERE " + restriction + " order  by itemid");
    // A subquery's WHERE is not the statement's.
    EXPECT_EQ(parser.QueryStringWithSecurity(
                  "SELECT * FROM ktitem WHERE itemid IN (SELECT itemid FROM keywords WHERE "
                  "keyword = 'a') ",
                  user),
              "SELECT * FROM ktitem WHERE " + restriction +
                  " AND (itemid IN (SELECT itemid FROM keywords WHERE keyword = 'a'))");
    // Without KTItem in the query the item id needs no table name.
    user = -1;
    EXPECT_EQ(parser.QueryStringWithSecurity("SELECT itemid FROM Invoices", user),
              "SELECT itemid FROM Invoices WHERE itemid NOT IN (SELECT itemid FROM KTSecurity "
              "WHERE UserID = -1)");
}

TEST(SqlQueryParser, RefusesTextsThatCouldReachPastTheRestriction) {
    SqlQueryParser parser;
    qint16 user = 3;
    const QString base = QStringLiteral("SELECT * FROM ktitem WHERE ");
    struct Case {
        QString condition;
        QString reason; // part of the message
    };
    const QList<Case> refused{
        {"keyword IN ('x')) OR 1=1 OR ((keyword = 'y') ", "parenthesis closes"},
        {"(a = 1", "parenthesis is not closed"},
        {"a = 'x", "not closed"},
        {"a = 'x''", "not closed"},
        {"[a = 1", "not closed"},
        {"a = 1 -- ) OR 1=1", "comment"},
        {"a = 1 /* ) */", "comment"},
        {"a = 1; DELETE FROM KTSecurity", "\";\""},
        {"a = E'\\'' ) OR 1=1 OR (a = '", "follows the word"},
        {"a = $$'$$ ) OR (1 = 1", "\"$\""},
        {"a = $q$x$q$", "\"$\""},
        {"a = `)` OR 1=1", "`"},
        {"a = @v(') OR 1=1 OR (1 = '", "\"@\""},
        {"a = :v", "\":\""},
        {"a = 1 UNION SELECT * FROM ktitem", "UNION"},
        {"a = 1 union select * from ktitem", "union"},
        {"a = 1 EXCEPT SELECT * FROM ktitem", "EXCEPT"},
        {QStringLiteral("a = 'x") + QChar(0) + QStringLiteral("'"), "null character"},
    };
    for (const Case& c : refused) {
        try {
            parser.QueryStringWithSecurity(base + c.condition, user);
            ADD_FAILURE() << "accepted: " << c.condition.toStdString();
        } catch (const Error& error) {
            EXPECT_TRUE(error.description().contains(c.reason))
                << c.condition.toStdString() << " -> " << error.description().toStdString();
            EXPECT_TRUE(error.description().startsWith(
                QStringLiteral("The query cannot be limited to the documents you may see")));
        }
    }
    EXPECT_THROW(
        parser.QueryStringWithSecurity(
            "WITH KTSecurity AS (SELECT 0 AS itemid, 0 AS UserID) SELECT * FROM ktitem", user),
        Error);

    // What the form and the keyword picker write passes: doubled quotes, a backslash inside a
    // quoted text, date literals, unions inside a sub-query, words holding the set operators.
    const QStringList accepted{
        "LOWER(Invoices.Customer) = 'o''brien'",
        "Invoices.Notes LIKE '%50\\%%' ESCAPE '\\'",
        "Invoices.InvoiceDate >= #03/01/2024# AND Invoices.InvoiceDate < #03/02/2024#",
        "keyword IN ('x'' OR ''1''=''1','b') ",
        "itemid IN (SELECT itemid FROM keywords UNION SELECT itemid FROM KTFile)",
        "[Union Station] = 1 AND exceptional = 2",
    };
    for (const QString& condition : accepted) {
        const QString restricted = parser.QueryStringWithSecurity(base + condition, user);
        EXPECT_EQ(restricted, base +
                                  "ktitem.itemid NOT IN (SELECT itemid FROM KTSecurity WHERE "
                                  "UserID = 3) AND (" +
                                  condition.trimmed() + ")");
    }
}

// A saved query names its own tables: one that makes up the item id, from a sub-query or a
// function, would pass rows of every document through the restriction.
TEST(SqlQueryParser, RefusesTablesThatMakeUpTheItemId) {
    SqlQueryParser parser;
    qint16 user = 2;
    for (const char* query :
         {"SELECT * FROM (SELECT InvoiceNo, Customer, 0 AS itemid FROM Invoices) AS q",
          "SELECT * FROM (SELECT InvoiceNo, 0 AS itemid FROM Invoices) q WHERE q.InvoiceNo > ''",
          "SELECT * FROM Invoices, (SELECT 0 AS itemid) AS ktitem WHERE Invoices.itemid > 0",
          "SELECT * FROM generate_series(0, 0) AS itemid, Invoices",
          "select * from json_each('[0]') ktitem, Invoices order by 1",
          "SELECT * FROM ktitem JOIN (VALUES (0)) AS v(itemid) ON 1 = 1"}) {
        try {
            parser.QueryStringWithSecurity(QString::fromUtf8(query), user);
            ADD_FAILURE() << "accepted: " << query;
        } catch (const Error& error) {
            EXPECT_TRUE(error.description().contains("FROM clause holds a sub-query"))
                << query << " -> " << error.description().toStdString();
        }
    }
    // Tables, joins on plain conditions and sub-queries after the FROM clause still pass.
    for (const char* query :
         {"SELECT count(*) AS n FROM ktitem, Invoices WHERE ktitem.itemid = Invoices.itemid",
          "SELECT * FROM Invoices JOIN ktitem ON ktitem.itemid = Invoices.itemid ORDER BY "
          "Invoices.itemid",
          "SELECT * FROM Invoices GROUP BY itemid HAVING count(*) IN (SELECT 1)"})
        EXPECT_NO_THROW(parser.QueryStringWithSecurity(QString::fromUtf8(query), user)) << query;
}
