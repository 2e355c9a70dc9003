#include "PostgresFixture.h"
#include "data/Recordset.h"

namespace vx::test {
namespace {

class PostgresWrite : public PostgresFixture {
protected:
    void SetUp() override {
        PostgresFixture::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        driver->execute(QStringLiteral("CREATE TABLE Words ([ID] COUNTER, [Word] VARCHAR(20), "
                                       "[Used] YESNO, [Added] DATETIME, [Score] DOUBLE)"));
        driver->execute(QStringLiteral("CREATE UNIQUE INDEX pk_index ON Words (ID) WITH PRIMARY"));
        driver->execute(QStringLiteral("INSERT INTO Words (Word, Used, Added, Score) VALUES "
                                       "('pear', 0, #01/02/2024#, 0.1), ('Apple', -1, NULL, 2)"));
        driver->execute(QStringLiteral("CREATE TABLE loose ([a] LONG, [b] VARCHAR(10), [r] REAL)"));
        driver->execute(QStringLiteral("INSERT INTO loose VALUES (1, 'same', 1.1), "
                                       "(1, 'same', 1.1), (1, 'SAME', 1.1)"));
    }

    QStringList words(Driver& reader) {
        const auto rows = reader.select(QStringLiteral("SELECT Word FROM Words ORDER BY ID"));
        QStringList list;
        for (qsizetype row = 0; row < rows->rowCount(); ++row)
            list << rows->value(row, 0).toString();
        return list;
    }
};

TEST_F(PostgresWrite, RowsAreWrittenBackByKeyOrPosition) {
    const QVariant id = driver->insertRow(
        QStringLiteral("Words"),
        {QStringLiteral("Word"), QStringLiteral("Used"), QStringLiteral("Added")},
        {QStringLiteral("kiwi"), qint64(-1), QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9))},
        QStringLiteral("ID"));
    EXPECT_EQ(id, QVariant(3));
    EXPECT_EQ(driver->updateRow(QStringLiteral("words"), {QStringLiteral("word")},
                                {QStringLiteral("plum")}, {QStringLiteral("id")}, {1}),
              1);
    EXPECT_EQ(driver->deleteRow(QStringLiteral("WORDS"), {QStringLiteral("ID")}, {2}), 1);
    EXPECT_EQ(words(*driver), (QStringList{QStringLiteral("plum"), QStringLiteral("kiwi")}));
    const auto kiwi = driver->select(QStringLiteral("SELECT * FROM Words WHERE ID = 3"));
    EXPECT_EQ(kiwi->value(0, 2), QVariant(true));
    EXPECT_EQ(kiwi->value(0, 3).toDateTime(), QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)));

    // Without a key only the first row with all the original values changes, and text compares
    // exactly: the case-blind collation must not pick "same" for "SAME".
    const QStringList all{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("r")};
    const auto loose = driver->selectTable(QStringLiteral("loose"));
    auto original = [&](qsizetype row) {
        return QVariantList{loose->value(row, 0), loose->value(row, 1), loose->value(row, 2)};
    };
    ASSERT_EQ(loose->value(2, 1).toString(), u"SAME");
    EXPECT_EQ(driver->deleteRow(QStringLiteral("loose"), all, original(2)), 1);
    EXPECT_EQ(driver->updateRow(QStringLiteral("loose"), {QStringLiteral("b")},
                                {QStringLiteral("other")}, all, original(0)),
              1);
    const auto left = driver->select(QStringLiteral("SELECT b FROM loose ORDER BY b"));
    ASSERT_EQ(left->rowCount(), 2);
    EXPECT_EQ(left->value(0, 0).toString(), u"other");
    EXPECT_EQ(left->value(1, 0).toString(), u"same");
    EXPECT_EQ(driver->deleteRow(QStringLiteral("loose"), all, {1, QStringLiteral("none"), 1.1}), 0);

    postgresErrorOf(
        [&] {
            driver->updateRow(QStringLiteral("Words"), {QStringLiteral("nope")}, {1},
                              {QStringLiteral("ID")}, {1});
        },
        ErrorNumber::ColumnNotFound);
    postgresErrorOf([&] { driver->deleteRow(QStringLiteral("Gone"), {QStringLiteral("ID")}, {1}); },
                    ErrorNumber::TableNotFound);
}

TEST_F(PostgresWrite, RecordsetEditsReachTheTable) {
    Connection connection = connect();
    EXPECT_EQ(connection.providerName(), u"PostgreSQL");
    Recordset set;
    set.open(QStringLiteral("select * from Words"), connection, CursorType::Keyset,
             LockType::Optimistic);
    ASSERT_TRUE(set.supports(CursorOption::Update));
    EXPECT_EQ(set.field(QStringLiteral("word")).definedSize(), 20);
    set.setSort(QStringLiteral("Word"));
    EXPECT_EQ(set.value(QStringLiteral("Word")), QVariant(QStringLiteral("Apple")));
    set.setValue(QStringLiteral("Word"), QStringLiteral("Quince"));
    set.setValue(QStringLiteral("Used"), false);
    set.update();
    set.addNew();
    set.setValue(QStringLiteral("Word"), QStringLiteral("fig"));
    set.setValue(QStringLiteral("Added"), QStringLiteral("2024-05-06"));
    set.update();
    EXPECT_EQ(set.value(QStringLiteral("ID")).toInt(), 3); // the engine's number comes back

    set.requery();
    EXPECT_EQ(set.recordCount(), 3);
    const auto rows = driver->select(QStringLiteral("SELECT Word, Used, Added FROM Words "
                                                    "ORDER BY ID"));
    EXPECT_EQ(rows->value(1, 0).toString(), u"Quince");
    EXPECT_EQ(rows->value(1, 1), QVariant(false));
    EXPECT_EQ(rows->value(2, 2).toDateTime(), QDateTime(QDate(2024, 5, 6), QTime(0, 0)));
}

TEST_F(PostgresWrite, TransactionsNestAndSurviveFailedStatements) {
    driver->beginTransaction();
    driver->execute(QStringLiteral("INSERT INTO Words (Word) VALUES ('outer')"));
    driver->beginTransaction();
    EXPECT_EQ(driver->transactionLevel(), 2);
    driver->insertRow(QStringLiteral("Words"), {QStringLiteral("Word")}, {QStringLiteral("inner")},
                      QStringLiteral("ID"));
    driver->rollbackTransaction();
    // A failing statement undoes only itself, as in the old engine.
    postgresErrorOf([&] { driver->execute(QStringLiteral("INSERT INTO Missing VALUES (1)")); },
                    ErrorNumber::TableNotFound);
    postgresErrorOf([&] { driver->select(QStringLiteral("SELECT * FROM Missing")); },
                    ErrorNumber::TableNotFound);
    driver->execute(QStringLiteral("UPDATE Words SET Words.Score = 9 WHERE Word = 'outer'"));
    driver->commitTransaction();
    EXPECT_EQ(driver->transactionLevel(), 0);
    EXPECT_EQ(words(*driver), (QStringList{QStringLiteral("pear"), QStringLiteral("Apple"),
                                           QStringLiteral("outer")}));
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM Words WHERE Score = 9")), 1);

    // Rolled back as a whole, and through the RAII guard.
    driver->beginTransaction();
    driver->execute(QStringLiteral("DELETE FROM Words"));
    driver->rollbackTransaction();
    {
        Connection connection = connect();
        Transaction transaction(connection);
        connection.execute(QStringLiteral("DELETE FROM Words"));
    }
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM Words")), 3);
    postgresErrorOf([&] { driver->commitTransaction(); }, ErrorNumber::Unspecified);

    // Several statements of one text take effect together or not at all.
    postgresErrorOf(
        [&] {
            driver->execute(
                QStringLiteral("CREATE TABLE half (x LONG); INSERT INTO nowhere VALUES (1)"));
        },
        ErrorNumber::TableNotFound);
    postgresErrorOf([&] { driver->select(QStringLiteral("SELECT * FROM half")); },
                    ErrorNumber::TableNotFound);
}

TEST_F(PostgresWrite, TwoConnectionsShareTheTableWithoutLosingWrites) {
    const auto writer = openDriver();
    const auto editor = openDriver();
    writer->beginTransaction();
    for (int i = 0; i < 50; ++i)
        writer->insertRow(QStringLiteral("Words"), {QStringLiteral("Word")},
                          {QStringLiteral("w%1").arg(i)}, QStringLiteral("ID"));
    // The other connection is not held up by the open transaction and does not see its rows.
    EXPECT_EQ(editor->updateRow(QStringLiteral("Words"), {QStringLiteral("Score")}, {7.5},
                                {QStringLiteral("ID")}, {1}),
              1);
    EXPECT_EQ(editor->select(QStringLiteral("SELECT * FROM Words"))->rowCount(), 2);
    EXPECT_EQ(count(QStringLiteral("SELECT count(*) FROM Words WHERE Score = 7.5")), 1);
    // Each side sees the other's work once it is committed.
    EXPECT_EQ(writer->select(QStringLiteral("SELECT Score FROM Words WHERE ID = 1"))
                  ->value(0, 0)
                  .toDouble(),
              7.5);
    writer->commitTransaction();
    EXPECT_EQ(editor->select(QStringLiteral("SELECT * FROM Words"))->rowCount(), 52);
    EXPECT_EQ(editor->updateRow(QStringLiteral("Words"), {QStringLiteral("Word")},
                                {QStringLiteral("edited")}, {QStringLiteral("ID")}, {52}),
              1);
    const auto rows = writer->select(QStringLiteral("SELECT Word, Score FROM Words WHERE ID "
                                                    "IN (1, 52) ORDER BY ID"));
    ASSERT_EQ(rows->rowCount(), 2);
    EXPECT_DOUBLE_EQ(rows->value(0, 1).toDouble(), 7.5);
    EXPECT_EQ(rows->value(1, 0).toString(), u"edited");
}

} // namespace
} // namespace vx::test
