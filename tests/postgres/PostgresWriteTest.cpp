#include "PostgresFixture.h"

using namespace Qt::StringLiterals;

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
        driver->execute(u"CREATE UNIQUE INDEX pk_index ON Words (ID) WITH PRIMARY"_s);
        driver->execute(QStringLiteral("INSERT INTO Words (Word, Used, Added, Score) VALUES "
                                       "('pear', 0, #01/02/2024#, 0.1), ('Apple', -1, NULL, 2)"));
        driver->execute(u"CREATE TABLE loose ([a] LONG, [b] VARCHAR(10), [r] REAL)"_s);
        driver->execute(QStringLiteral("INSERT INTO loose VALUES (1, 'same', 1.1), "
                                       "(1, 'same', 1.1), (1, 'SAME', 1.1)"));
    }

    QStringList words(Driver& reader) {
        const auto rows = reader.select(u"SELECT Word FROM Words ORDER BY ID"_s);
        QStringList list;
        for (qsizetype row = 0; row < rows->rowCount(); ++row)
            list << rows->value(row, 0).toString();
        return list;
    }
};

TEST_F(PostgresWrite, RowsAreWrittenBackByKeyOrPosition) {
    const QVariant id = driver->insertRow(
        u"Words"_s, {u"Word"_s, u"Used"_s, u"Added"_s},
        {u"kiwi"_s, qint64(-1), QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9))}, u"ID"_s);
    EXPECT_EQ(id, QVariant(3));
    EXPECT_EQ(driver->updateRow(u"words"_s, {u"word"_s}, {u"plum"_s}, {u"id"_s}, {1}), 1);
    EXPECT_EQ(driver->deleteRow(u"WORDS"_s, {u"ID"_s}, {2}), 1);
    EXPECT_EQ(words(*driver), (QStringList{u"plum"_s, u"kiwi"_s}));
    const auto kiwi = driver->select(u"SELECT * FROM Words WHERE ID = 3"_s);
    EXPECT_EQ(kiwi->value(0, 2), QVariant(true));
    EXPECT_EQ(kiwi->value(0, 3).toDateTime(), QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)));

    // Without a key only the first row with all the original values changes, and text compares
    // exactly: the case-blind collation must not pick "same" for "SAME".
    const QStringList all{u"a"_s, u"b"_s, u"r"_s};
    const auto loose = driver->selectTable(u"loose"_s);
    auto original = [&](qsizetype row) {
        return QVariantList{loose->value(row, 0), loose->value(row, 1), loose->value(row, 2)};
    };
    ASSERT_EQ(loose->value(2, 1).toString(), u"SAME");
    EXPECT_EQ(driver->deleteRow(u"loose"_s, all, original(2)), 1);
    EXPECT_EQ(driver->updateRow(u"loose"_s, {u"b"_s}, {u"other"_s}, all, original(0)), 1);
    const auto left = driver->select(u"SELECT b FROM loose ORDER BY b"_s);
    ASSERT_EQ(left->rowCount(), 2);
    EXPECT_EQ(left->value(0, 0).toString(), u"other");
    EXPECT_EQ(left->value(1, 0).toString(), u"same");
    EXPECT_EQ(driver->deleteRow(u"loose"_s, all, {1, u"none"_s, 1.1}), 0);

    postgresErrorOf([&] { driver->updateRow(u"Words"_s, {u"nope"_s}, {1}, {u"ID"_s}, {1}); },
                    ErrorNumber::ColumnNotFound);
    postgresErrorOf([&] { driver->deleteRow(u"Gone"_s, {u"ID"_s}, {1}); },
                    ErrorNumber::TableNotFound);
}

// An all-or-nothing transaction sends its statements bare: the first failure spoils the whole
// transaction, which is rolled back; the next ordinary transaction guards its statements again.
TEST_F(PostgresWrite, AnAllOrNothingTransactionEndsWholeAtItsFirstFailure) {
    driver->beginAllOrNothingTransaction();
    driver->execute(u"INSERT INTO Words (Word) VALUES ('kept?')"_s);
    postgresErrorOf([&] { driver->execute(u"INSERT INTO Missing VALUES (1)"_s); },
                    ErrorNumber::TableNotFound);
    // Nothing more runs in it, and its earlier statements go with it.
    EXPECT_THROW(driver->execute(u"INSERT INTO Words (Word) VALUES ('after')"_s), Error);
    driver->rollbackTransaction();
    EXPECT_EQ(count(u"SELECT count(*) FROM Words WHERE Word IN ('kept?', 'after')"_s), 0);

    driver->beginAllOrNothingTransaction();
    driver->execute(u"INSERT INTO Words (Word) VALUES ('whole')"_s);
    driver->commitTransaction();
    driver->beginTransaction();
    postgresErrorOf([&] { driver->execute(u"INSERT INTO Missing VALUES (1)"_s); },
                    ErrorNumber::TableNotFound);
    driver->execute(u"INSERT INTO Words (Word) VALUES ('guarded')"_s);
    driver->commitTransaction();
    EXPECT_EQ(count(u"SELECT count(*) FROM Words WHERE Word IN ('whole', 'guarded')"_s), 2);
}

TEST_F(PostgresWrite, TransactionsNestAndSurviveFailedStatements) {
    driver->beginTransaction();
    driver->execute(u"INSERT INTO Words (Word) VALUES ('outer')"_s);
    driver->beginTransaction();
    EXPECT_EQ(driver->transactionLevel(), 2);
    driver->insertRow(u"Words"_s, {u"Word"_s}, {u"inner"_s}, u"ID"_s);
    driver->rollbackTransaction();
    // A failing statement undoes only itself, as in the old engine.
    postgresErrorOf([&] { driver->execute(u"INSERT INTO Missing VALUES (1)"_s); },
                    ErrorNumber::TableNotFound);
    postgresErrorOf([&] { driver->select(u"SELECT * FROM Missing"_s); },
                    ErrorNumber::TableNotFound);
    driver->execute(u"UPDATE Words SET Words.Score = 9 WHERE Word = 'outer'"_s);
    driver->commitTransaction();
    EXPECT_EQ(driver->transactionLevel(), 0);
    EXPECT_EQ(words(*driver), (QStringList{u"pear"_s, u"Apple"_s, u"outer"_s}));
    EXPECT_EQ(count(u"SELECT count(*) FROM Words WHERE Score = 9"_s), 1);

    // Rolled back as a whole, and through the RAII guard.
    driver->beginTransaction();
    driver->execute(u"DELETE FROM Words"_s);
    driver->rollbackTransaction();
    {
        Connection connection = connect();
        Transaction transaction(connection);
        connection.execute(u"DELETE FROM Words"_s);
    }
    EXPECT_EQ(count(u"SELECT count(*) FROM Words"_s), 3);
    postgresErrorOf([&] { driver->commitTransaction(); }, ErrorNumber::Unspecified);

    // Several statements of one text take effect together or not at all.
    postgresErrorOf(
        [&] { driver->execute(u"CREATE TABLE half (x LONG); INSERT INTO nowhere VALUES (1)"_s); },
        ErrorNumber::TableNotFound);
    postgresErrorOf([&] { driver->select(u"SELECT * FROM half"_s); }, ErrorNumber::TableNotFound);
}

TEST_F(PostgresWrite, TwoConnectionsShareTheTableWithoutLosingWrites) {
    const auto writer = openDriver();
    const auto editor = openDriver();
    writer->beginTransaction();
    for (int i = 0; i < 50; ++i)
        writer->insertRow(u"Words"_s, {u"Word"_s}, {u"w%1"_s.arg(i)}, u"ID"_s);
    // The other connection is not held up by the open transaction and does not see its rows.
    EXPECT_EQ(editor->updateRow(u"Words"_s, {u"Score"_s}, {7.5}, {u"ID"_s}, {1}), 1);
    EXPECT_EQ(editor->select(u"SELECT * FROM Words"_s)->rowCount(), 2);
    writer->commitTransaction();
    EXPECT_EQ(editor->select(u"SELECT * FROM Words"_s)->rowCount(), 52);
    EXPECT_EQ(count(u"SELECT count(*) FROM Words WHERE Score = 7.5"_s), 1);
}

} // namespace
} // namespace vx::test
