#include "support/EngineDatabase.h"

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

class PostgresWrite : public PostgresDatabase {
protected:
    void SetUp() override {
        PostgresDatabase::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        driver().execute(
            u"CREATE TABLE Words ([ID] COUNTER, [Word] VARCHAR(20), [Score] DOUBLE)"_s);
        driver().execute(u"CREATE UNIQUE INDEX pk_index ON Words (ID) WITH PRIMARY"_s);
        driver().execute(u"INSERT INTO Words (Word) VALUES ('pear'), ('Apple')"_s);
    }
};

TEST_F(PostgresWrite, AnAllOrNothingTransactionEndsWholeAtItsFirstFailure) {
    driver().beginAllOrNothingTransaction();
    driver().execute(u"INSERT INTO Words (Word) VALUES ('kept?')"_s);
    expectError([&] { driver().execute(u"INSERT INTO Missing VALUES (1)"_s); },
                ErrorNumber::TableNotFound);
    // Nothing more runs in it, and its earlier statements go with it.
    EXPECT_THROW(driver().execute(u"INSERT INTO Words (Word) VALUES ('after')"_s), Error);
    driver().rollbackTransaction();
    EXPECT_EQ(count(u"SELECT count(*) FROM Words WHERE Word IN ('kept?', 'after')"_s), 0);

    driver().beginAllOrNothingTransaction();
    driver().execute(u"INSERT INTO Words (Word) VALUES ('whole')"_s);
    driver().commitTransaction();
    driver().beginTransaction();
    expectError([&] { driver().execute(u"INSERT INTO Missing VALUES (1)"_s); },
                ErrorNumber::TableNotFound);
    driver().execute(u"INSERT INTO Words (Word) VALUES ('guarded')"_s);
    driver().commitTransaction();
    EXPECT_EQ(count(u"SELECT count(*) FROM Words WHERE Word IN ('whole', 'guarded')"_s), 2);
}

TEST_F(PostgresWrite, TwoConnectionsShareTheTableWithoutLosingWrites) {
    Connection writer = connect();
    Connection editor = connect();
    writer.driver().beginTransaction();
    for (int i = 0; i < 50; ++i)
        writer.driver().insertRow(u"Words"_s, {u"Word"_s}, {u"w%1"_s.arg(i)}, u"ID"_s);
    // The other connection is not held up by the open transaction and does not see its rows.
    EXPECT_EQ(editor.driver().updateRow(u"Words"_s, {u"Score"_s}, {7.5}, {u"ID"_s}, {1}), 1);
    EXPECT_EQ(editor.driver().select(u"SELECT * FROM Words"_s)->rowCount(), 2);
    writer.driver().commitTransaction();
    EXPECT_EQ(editor.driver().select(u"SELECT * FROM Words"_s)->rowCount(), 52);
    EXPECT_EQ(count(u"SELECT count(*) FROM Words WHERE Score = 7.5"_s), 1);
}

} // namespace
} // namespace vx::test
