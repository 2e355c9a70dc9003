#include "support/EngineDatabase.h"
#include "support/ErrorNumberOf.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

class EngineWrite : public EngineTest {
protected:
    // What the table holds, as text, whatever the column's type.
    QStringList stored(const QString& sql) const {
        const auto rows = driver().select(sql);
        QStringList values;
        for (qsizetype row = 0; row < rows->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < rows->columnCount(); ++column)
                cells << (rows->isNull(row, column) ? u"NULL"_s
                                                    : rows->value(row, column).toString());
            values << cells.join(u'|');
        }
        return values;
    }
};

TEST_P(EngineWrite, RowsAreWrittenByKeyInTheStorageConventions) {
    connection.execute(u"CREATE TABLE KTItem ([itemid] COUNTER CONSTRAINT pk_KTItem PRIMARY KEY, "
                       "[idx_date] DATETIME, [username] VARCHAR(50), [deleted] YESNO, "
                       "[size] DOUBLE)"_s);
    const QStringList columns{u"idx_date"_s, u"username"_s, u"deleted"_s, u"size"_s};
    const QDateTime filed(QDate(2024, 3, 15), QTime(9, 5, 7));
    EXPECT_FALSE(
        driver().insertRow(u"KTItem"_s, columns, {filed, u"bob"_s, true, 1.25}, {}).isValid());
    EXPECT_EQ(driver().insertRow(u"ktitem"_s, columns,
                                 {QDate(2023, 12, 31), u"it's"_s, false, QVariant()}, u"itemid"_s),
              QVariant(2));
    EXPECT_EQ(stored(u"SELECT idx_date || '', deleted + 0, size FROM KTItem ORDER BY itemid"_s),
              (QStringList{u"2024-03-15 09:05:07|-1|1.25"_s, u"2023-12-31 00:00:00|0|NULL"_s}));
    const auto first = driver().select(u"SELECT idx_date, deleted FROM KTItem WHERE itemid = 1"_s);
    EXPECT_EQ(first->value(0, 0).toDateTime(), filed);
    EXPECT_EQ(first->value(0, 1), QVariant(true));

    EXPECT_EQ(driver().updateRow(u"ktitem"_s, {u"username"_s, u"deleted"_s}, {u"carol"_s, true},
                                 {u"ITEMID"_s}, {2}),
              1);
    EXPECT_EQ(driver().updateRow(u"KTItem"_s, {u"username"_s}, {u"x"_s}, {u"itemid"_s}, {99}), 0);
    EXPECT_EQ(driver().deleteRow(u"KTITEM"_s, {u"itemid"_s}, {1}), 1);
    EXPECT_EQ(stored(u"SELECT itemid, username, deleted + 0 FROM KTItem"_s),
              QStringList{u"2|carol|-1"_s});

    expectError([&] { driver().insertRow(u"KTItem"_s, {u"itemid"_s}, {2}, {}); },
                ErrorNumber::IntegrityViolation);
    expectError([&] { driver().insertRow(u"nothere"_s, {u"itemid"_s}, {2}, {}); },
                ErrorNumber::TableNotFound);
    expectError([&] { driver().updateRow(u"KTItem"_s, {u"nope"_s}, {1}, {u"itemid"_s}, {2}); },
                ErrorNumber::ColumnNotFound);
}

// Without a key a row is found by all its original values, one row at a time; text compares
// exactly (the case-blind collation must not pick "tax" for "TAX") and a null matches a null.
TEST_P(EngineWrite, KeylessRowsAreFoundByAllTheirValuesOneAtATime) {
    connection.execute(u"CREATE TABLE keywords ([keyword] VARCHAR(50), [itemid] LONG, "
                       "[seen] DATETIME, [r] REAL)"_s);
    connection.execute(u"INSERT INTO keywords VALUES ('tax', 1, NULL, 1.1), ('tax', 1, NULL, 1.1), "
                       "('TAX', 1, NULL, 1.1), ('fee', 2, '2024-03-15', 1.1)"_s);
    const QStringList all{u"keyword"_s, u"itemid"_s, u"seen"_s, u"r"_s};
    const auto read = driver().selectTable(u"keywords"_s);
    auto original = [&](qsizetype row) {
        return QVariantList{read->value(row, 0), read->value(row, 1), read->value(row, 2),
                            read->value(row, 3)};
    };
    ASSERT_EQ(read->value(2, 0).toString(), u"TAX");
    EXPECT_EQ(driver().deleteRow(u"keywords"_s, all, original(2)), 1);
    EXPECT_EQ(driver().updateRow(u"keywords"_s, {u"keyword"_s}, {u"vat"_s}, all, original(0)), 1);
    // A date stored without its time still matches the value read back.
    EXPECT_EQ(driver().deleteRow(
                  u"keywords"_s, all,
                  {u"fee"_s, 2, QDateTime(QDate(2024, 3, 15), QTime(0, 0)), read->value(3, 3)}),
              1);
    EXPECT_EQ(driver().deleteRow(u"keywords"_s, all, {u"none"_s, 1, QVariant(), 1.1}), 0);
    EXPECT_EQ(stored(u"SELECT keyword, itemid FROM keywords ORDER BY keyword"_s),
              (QStringList{u"tax|1"_s, u"vat|1"_s}));
}

TEST_P(EngineWrite, TransactionsNestAndAFailedStatementUndoesOnlyItself) {
    connection.execute(u"CREATE TABLE t (a LONG)"_s);
    const QString rows = u"SELECT count(*) FROM t"_s;
    connection.beginTrans();
    connection.execute(u"INSERT INTO t VALUES (1)"_s);
    connection.beginTrans();
    EXPECT_EQ(connection.transactionLevel(), 2);
    connection.execute(u"INSERT INTO t VALUES (2)"_s);
    connection.rollbackTrans(); // only the inner row goes
    expectError([&] { connection.execute(u"INSERT INTO Missing VALUES (1)"_s); },
                ErrorNumber::TableNotFound);
    expectError([&] { driver().select(u"SELECT * FROM Missing"_s); }, ErrorNumber::TableNotFound);
    connection.beginTrans();
    connection.execute(u"INSERT INTO t VALUES (3)"_s);
    connection.commitTrans();
    EXPECT_EQ(count(rows), 2);
    connection.rollbackTrans(); // the outer one takes the committed inner work with it
    EXPECT_EQ(connection.transactionLevel(), 0);
    EXPECT_EQ(count(rows), 0);
    expectError([&] { connection.commitTrans(); }, ErrorNumber::Unspecified);

    {
        Transaction kept(connection);
        connection.execute(u"INSERT INTO t VALUES (4)"_s);
        kept.commit();
    }
    {
        Transaction dropped(connection);
        connection.execute(u"INSERT INTO t VALUES (5)"_s);
    }
    EXPECT_EQ(connection.transactionLevel(), 0);
    EXPECT_EQ(count(rows), 1);

    // On the server several statements of one text take effect together or not at all.
    if (onPostgres()) {
        expectError(
            [&] {
                driver().execute(u"CREATE TABLE half (x LONG); INSERT INTO nowhere "
                                 "VALUES (1)"_s);
            },
            ErrorNumber::TableNotFound);
        expectError([&] { driver().select(u"SELECT * FROM half"_s); }, ErrorNumber::TableNotFound);
    }

    // Closing with a transaction open keeps none of it.
    connection.beginTrans();
    connection.execute(u"INSERT INTO t VALUES (6)"_s);
    connection.close();
    connection = connect();
    EXPECT_EQ(count(rows), 1);
}

INSTANTIATE_TEST_SUITE_P(Engines, EngineWrite, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         engineName);

} // namespace
} // namespace vx::test
