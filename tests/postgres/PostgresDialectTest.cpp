#include "data/dialect/PostgresDialect.h"

#include <gtest/gtest.h>

namespace vx::test {
namespace {

const char* const createCollation =
    "CREATE COLLATION IF NOT EXISTS nocase (provider = icu, locale = 'und-u-ks-level2', "
    "deterministic = false)";
const char* const createYesNo = "DO $$BEGIN CREATE DOMAIN yesno AS smallint; EXCEPTION WHEN "
                                "duplicate_object THEN NULL; END$$";

TEST(PostgresDialect, RewritesQueriesAndLeavesLiteralsAlone) {
    const struct {
        const char* input;
        const char* output;
    } cases[] = {
        // Bracketed names reach the lower-case tables; aliases keep their text.
        {"select [itemid] AS [Item ID], [Version], [fname] AS [File Name] from KTRevision "
         "where itemid= 5",
         "select \"itemid\" AS \"Item ID\", \"version\", \"fname\" AS \"File Name\" from "
         "KTRevision where itemid= 5"},
        {"SELECT [name] AS [Name] FROM [KTGroup] WHERE [Name] = 'Invoices'",
         "SELECT \"name\" AS \"Name\" FROM \"ktgroup\" WHERE \"name\" = 'Invoices'"},
        // References to an alias: as a qualifier and in ORDER BY.
        {"SELECT [i].[itemid] AS [Total], x FROM KTItem AS [I] ORDER BY [Total] DESC, [x]",
         "SELECT \"I\".\"itemid\" AS \"Total\", x FROM KTItem AS \"I\" ORDER BY \"Total\" DESC, "
         "\"x\""},
        {"SELECT I.itemid FROM KTItem AS [I]", "SELECT \"I\".itemid FROM KTItem AS \"I\""},
        // Plain select-list aliases keep their case too; casts and lower-case ones are left.
        {"SELECT k.idx_date AS IndexDate, CAST(a AS INTEGER) AS n FROM k ORDER BY IndexDate",
         "SELECT k.idx_date AS \"IndexDate\", CAST(a AS INTEGER) AS n FROM k ORDER BY "
         "\"IndexDate\""},
        // LIKE matches without regard to case, on any operand.
        {"SELECT * FROM t WHERE [name] LIKE 'ab%' AND t.b NOT LIKE [t].[c]",
         "SELECT * FROM t WHERE \"name\" ILIKE 'ab%' COLLATE \"default\" AND t.b NOT ILIKE "
         "\"t\".\"c\" COLLATE \"default\""},
        {"SELECT * FROM t WHERE a LIKE lower('X') || '%' OR b LIKE (c)",
         "SELECT * FROM t WHERE a ILIKE lower('X') COLLATE \"default\" || '%' OR b ILIKE (c) "
         "COLLATE \"default\""},
        // Dates, Booleans and table-qualified SET targets.
        {"UPDATE KTFile SET archive = TRUE WHERE fdate < #03/15/2024# AND fdate > "
         "#3/1/2024 2:05:09 PM# AND deleted = false",
         "UPDATE KTFile SET archive = -1 WHERE fdate < '2024-03-15'::timestamp AND fdate > "
         "'2024-03-01 14:05:09'::timestamp AND deleted = 0"},
        {"UPDATE Invoices SET Invoices.Customer='x' WHERE Invoices.Customer='y'",
         "UPDATE Invoices SET Customer='x' WHERE Invoices.Customer='y'"},
        // Literals and comments stay exactly as written.
        {"SELECT 'it''s [x] #01/02/2024# TRUE LIKE', \"Mixed\" FROM t -- [y] LIKE\n",
         "SELECT 'it''s [x] #01/02/2024# TRUE LIKE', \"Mixed\" FROM t -- [y] LIKE"},
        // Indexes: the primary one becomes the key, names are made per table.
        {"CREATE UNIQUE INDEX pk_index ON KTItem (itemid) WITH PRIMARY;",
         "ALTER TABLE KTItem ADD PRIMARY KEY (itemid)"},
        {"CREATE UNIQUE INDEX [pk] ON [My Table]([a] DESC, [b]) WITH PRIMARY",
         "ALTER TABLE \"my table\" ADD PRIMARY KEY (\"a\" , \"b\")"},
        {"CREATE INDEX ix ON [KTFile] ([itemid] DESC) WITH DISALLOW NULL",
         "CREATE INDEX \"ix_ktfile\" ON \"ktfile\" (\"itemid\" DESC)"},
        {"DROP INDEX ix ON KTFile", "DROP INDEX \"ix_ktfile\""},
    };
    const PostgresDialect dialect;
    for (const auto& example : cases)
        EXPECT_EQ(dialect.rewrite(QString::fromUtf8(example.input)).toStdString(), example.output);
}

TEST(PostgresDialect, CreatesNativeTypesAndKeepsDeclaredNames) {
    const PostgresDialect dialect;
    EXPECT_EQ(
        dialect.rewriteStatements(QStringLiteral(
            "CREATE TABLE KTGroup ([Groupid] LONG,[Name] VARCHAR(25),[Notes] LONGTEXT,"
            "[Deleted] BIT, [Code] CHAR(4) NOT NULL, [Due] DATETIME, [Amount] CURRENCY, "
            "[id] COUNTER, [x] DOUBLE, [s] SHORT, [m] MEMO WITH COMPRESSION);")),
        QStringList({createCollation, createYesNo,
                     "CREATE TABLE KTGroup (\"groupid\" integer,\"name\" varchar(25) COLLATE "
                     "nocase,\"notes\" text COLLATE nocase,\"deleted\" yesno, \"code\" char(4) "
                     "COLLATE nocase NOT NULL, \"due\" timestamp(0), \"amount\" numeric(19,4), "
                     "\"id\" serial, \"x\" double precision, \"s\" smallint, \"m\" text "
                     "COLLATE nocase )",
                     "COMMENT ON TABLE KTGroup IS 'KTGroup'",
                     "COMMENT ON COLUMN KTGroup.\"groupid\" IS 'Groupid'",
                     "COMMENT ON COLUMN KTGroup.\"name\" IS 'Name'",
                     "COMMENT ON COLUMN KTGroup.\"notes\" IS 'Notes'",
                     "COMMENT ON COLUMN KTGroup.\"deleted\" IS 'Deleted'",
                     "COMMENT ON COLUMN KTGroup.\"code\" IS 'Code'",
                     "COMMENT ON COLUMN KTGroup.\"due\" IS 'Due'",
                     "COMMENT ON COLUMN KTGroup.\"amount\" IS 'Amount'"}));

    // Lower-case names need no comment; each statement of a text is rewritten on its own.
    EXPECT_EQ(dialect.rewriteStatements(QStringLiteral(
                  "CREATE TABLE a (x TEXT(3), [it's] LONG); UPDATE a SET a.x = 'y'")),
              QStringList({createCollation,
                           "CREATE TABLE a (x varchar(3) COLLATE nocase, \"it's\" "
                           "integer)",
                           "UPDATE a SET x = 'y'"}));
    EXPECT_EQ(
        dialect.rewriteStatements(QStringLiteral("ALTER TABLE KTItem ADD COLUMN [Extra] TEXT(30)")),
        QStringList({createCollation,
                     "ALTER TABLE KTItem ADD COLUMN \"extra\" varchar(30) COLLATE nocase",
                     "COMMENT ON COLUMN KTItem.\"extra\" IS 'Extra'"}));

    // A server without ICU: text keeps the server's collation, LIKE still ignores case.
    const PostgresDialect withoutIcu(false);
    EXPECT_EQ(
        withoutIcu.rewriteStatements(
            QStringLiteral("CREATE TABLE t ([a] TEXT(5), [b] YESNO, [c] LONGTEXT)")),
        QStringList({createYesNo, "CREATE TABLE t (\"a\" varchar(5), \"b\" yesno, \"c\" text)"}));
    EXPECT_EQ(withoutIcu.rewrite(QStringLiteral("SELECT * FROM t WHERE a LIKE 'x%'")).toStdString(),
              "SELECT * FROM t WHERE a ILIKE 'x%'");
}

} // namespace
} // namespace vx::test
