#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;
using namespace Qt::StringLiterals;

namespace {

// A fresh repository file per test, with a keyed word list and a table without a key.
struct SqliteRoundTrip : ::testing::Test {
    QTemporaryDir folder;
    QString connectionText;
    Connection connection;

    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        connectionText = u"Provider=SQLite;Data Source=%1;Create If Missing=True"_s.arg(
            folder.filePath("repository.db"));
        connection.open(connectionText);
        connection.execute("CREATE TABLE words (id COUNTER, word VARCHAR(20), used YESNO, "
                           "added DATETIME)");
        connection.execute("CREATE UNIQUE INDEX pk_index ON words (id) WITH PRIMARY");
        connection.execute("INSERT INTO words (word, used, added) VALUES ('pear', 0, "
                           "'2024-01-02 00:00:00')");
        connection.execute("INSERT INTO words (word, used, added) VALUES ('Apple', -1, NULL)");
        connection.execute("INSERT INTO words (word, used, added) VALUES ('fig', 0, NULL)");
        connection.execute("CREATE TABLE loose (a LONG, b VARCHAR(10))");
        connection.execute("INSERT INTO loose (a, b) VALUES (1, 'same')");
        connection.execute("INSERT INTO loose (a, b) VALUES (1, 'same')");
    }

    // What the table holds now, read through a second connection.
    QStringList contents(const QString& sql) {
        Connection reader;
        reader.open(connectionText);
        Recordset set;
        set.open(sql, reader);
        QStringList rows;
        while (!set.eof()) {
            QStringList cells;
            for (int c = 0; c < set.fieldCount(); ++c) {
                const QVariant value = set.value(c);
                cells << (value.isValid() ? value.toString() : u"null"_s);
            }
            rows << cells.join('|');
            set.moveNext();
        }
        return rows;
    }
};

} // namespace

TEST_F(SqliteRoundTrip, ImmediateEditsReachTheTable) {
    Recordset set;
    set.open("select * from words", connection, CursorType::Keyset, LockType::Optimistic);
    set.setValue("word", "plum");
    set.moveNext(); // writes the edit
    set.deleteCurrent();
    set.addNew();
    set.setValue("word", "kiwi");
    set.setValue("used", true);
    set.update();
    const QVariant newId = set.value("id");
    EXPECT_EQ(newId, QVariant(4));

    EXPECT_EQ(contents("select id, word, used from words order by id"),
              (QStringList{"1|plum|false", "3|fig|false", "4|kiwi|true"}));
}

TEST_F(SqliteRoundTrip, TableWithoutKeyChangesOneRowOfTwoEqualOnes) {
    Recordset set;
    set.open("loose", connection, CursorType::ForwardOnly, LockType::Optimistic,
             CommandType::TableDirect);
    ASSERT_TRUE(set.supports(CursorOption::Update));
    set.setValue("b", "changed");
    set.update();
    EXPECT_EQ(contents("select a, b from loose order by b"), (QStringList{"1|changed", "1|same"}));
}

TEST_F(SqliteRoundTrip, RequerySeesOtherWritersAndKeepsTheSort) {
    Recordset set;
    set.open("select * from words", connection, CursorType::Keyset, LockType::Optimistic);
    set.setSort("[word] DESC");
    Connection other;
    other.open(connectionText);
    other.execute("INSERT INTO words (word, used) VALUES ('zucchini', 0)");
    set.moveLast();
    set.requery();
    EXPECT_EQ(set.recordCount(), 4);
    EXPECT_EQ(set.position(), 0);
    EXPECT_EQ(set.value("word"), QVariant("zucchini"));

    // A row that another writer deleted cannot be updated.
    other.execute("DELETE FROM words WHERE word = 'zucchini'");
    set.setValue("word", "zebra");
    try {
        set.update();
        FAIL() << "updated a row that is gone";
    } catch (const Error& error) {
        EXPECT_EQ(error.description(), QStringLiteral("Row cannot be located for updating. Some "
                                                      "values may have been changed since it "
                                                      "was last read."));
    }
}
