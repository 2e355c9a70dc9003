#include "data/dialect/SqliteDialect.h"

#include <gtest/gtest.h>

namespace vx::test {
namespace {

TEST(SqliteDialect, RewritesWhatTheEngineDoesNotTakeAndNothingElse) {
    const struct {
        const char* input;
        const char* output;
    } cases[] = {
        // Primary indexes: no WITH clause, a per-table name.
        {"CREATE UNIQUE INDEX pk_index ON KTItem (itemid) WITH PRIMARY",
         "CREATE UNIQUE INDEX pk_index_KTItem ON KTItem (itemid)"},
        {"create unique index [pk index] on [My Table] ([a], [b]) with primary",
         "create unique index \"pk index_My Table\" on [My Table] ([a], [b])"},
        {"CREATE INDEX ix_KTItem_groupid ON [KTItem] ([groupid])",
         "CREATE INDEX ix_KTItem_groupid ON [KTItem] ([groupid])"},
        {"DROP INDEX pk_index ON KTFile", "DROP INDEX pk_index_KTFile"},
        // Table-qualified SET targets, but not qualified values.
        {"UPDATE KTItem SET KTItem.deleted=-1, [KTItem].[tag] = Other.tag WHERE KTItem.itemid = 5",
         "UPDATE KTItem SET deleted=-1, [tag] = Other.tag WHERE KTItem.itemid = 5"},
        {"UPDATE T SET C = (SELECT T.x FROM T), T.D = 1",
         "UPDATE T SET C = (SELECT T.x FROM T), D = 1"},
        // Date literals and Boolean keywords.
        {"SELECT * FROM KTItem WHERE idx_date >= #03/15/2024# AND idx_date < #3/16/2024 2:05:09 "
         "PM#",
         "SELECT * FROM KTItem WHERE idx_date >= '2024-03-15 00:00:00' AND idx_date < "
         "'2024-03-16 14:05:09'"},
        {"UPDATE KTFile SET archive = TRUE WHERE deleted = false",
         "UPDATE KTFile SET archive = -1 WHERE deleted = 0"},
        {"SELECT t.true, TRUE(x) FROM t", "SELECT t.true, TRUE(x) FROM t"},
        {"SELECT #13/45/2024#", "SELECT #13/45/2024#"},
        // Literals, quoted names and comments are left alone.
        {"SELECT 'TRUE #03/15/2024# SET T.C=1', [True], \"false\" FROM t -- TRUE\n",
         "SELECT 'TRUE #03/15/2024# SET T.C=1', [True], \"false\" FROM t -- TRUE\n"},
        {"INSERT INTO t VALUES ('it''s WITH PRIMARY', TRUE)",
         "INSERT INTO t VALUES ('it''s WITH PRIMARY', -1)"},
        // Text columns compare without regard to case; Jet type names stay as declared.
        {"CREATE TABLE [Invoices] ([itemid] LONG NOT NULL, [Customer] VARCHAR(50), "
         "[Notes] LONGTEXT, [Code] CHAR(4) NOT NULL, [Due] DATETIME, [Paid] YESNO, "
         "[Tag] TEXT(10) COLLATE BINARY, CONSTRAINT [pk] PRIMARY KEY ([itemid]))",
         "CREATE TABLE [Invoices] ([itemid] LONG NOT NULL, [Customer] VARCHAR(50) COLLATE NOCASE, "
         "[Notes] LONGTEXT COLLATE NOCASE, [Code] CHAR(4) NOT NULL COLLATE NOCASE, [Due] DATETIME, "
         "[Paid] YESNO, [Tag] TEXT(10) COLLATE BINARY, CONSTRAINT [pk] PRIMARY KEY ([itemid]))"},
        {"CREATE TABLE c (id COUNTER CONSTRAINT pk PRIMARY KEY, n TEXT(5) WITH COMPRESSION)",
         "CREATE TABLE c (id INTEGER PRIMARY KEY AUTOINCREMENT , n TEXT(5)  COLLATE NOCASE)"},
        {"CREATE TABLE v AS SELECT name FROM t", "CREATE TABLE v AS SELECT name FROM t"},
        // Several statements are rewritten each on its own.
        {"CREATE TABLE a (x TEXT(3)); UPDATE a SET a.x = 'y'",
         "CREATE TABLE a (x TEXT(3) COLLATE NOCASE); UPDATE a SET x = 'y'"},
    };
    const SqliteDialect dialect;
    for (const auto& example : cases)
        EXPECT_EQ(dialect.rewrite(QString::fromUtf8(example.input)).toStdString(), example.output);
}

} // namespace
} // namespace vx::test
