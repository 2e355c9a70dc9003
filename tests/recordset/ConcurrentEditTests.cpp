// Two users (two connections) editing the same rows: optimistic locking on every engine.
#include "data/Connection.h"
#include "data/Driver.h"
#include "data/Recordset.h"
#include "data/postgres/PostgresDriver.h"
#include "data/recordset/RecordsetErrors.h"
#include "support/ErrorNumberOf.h"
#include "support/PostgresServer.h"

#include <QDate>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;
using namespace Qt::StringLiterals;
using vx::test::errorNumberOf;

namespace {

enum class Engine { Sqlite, Postgres };

const QString ConflictText = u"Row cannot be located for updating. Some values may have been "
                             u"changed since it was last read."_s;

class TwoUsers : public ::testing::TestWithParam<Engine> {
protected:
    QTemporaryDir folder;
    QString connectionText;
    Connection first;  // the first user
    Connection second; // the other user

    void SetUp() override {
        if (GetParam() == Engine::Postgres) {
            test::PostgresServer& server = test::PostgresServer::instance();
            if (!server.isAvailable())
                GTEST_SKIP() << server.skipReason().toStdString();
            ASSERT_TRUE(server.isRunning()) << server.failure().toStdString();
            registerDriver(u"PostgreSQL"_s, [] { return createPostgresDriver(); });
            connectionText = server.createDatabase();
            ASSERT_FALSE(connectionText.isEmpty()) << server.failure().toStdString();
        } else {
            ASSERT_TRUE(folder.isValid());
            connectionText = u"Provider=SQLite;Data Source=%1;Create If Missing=True"_s.arg(
                folder.filePath("repository.db"));
        }
        first.open(connectionText);
        first.execute("CREATE TABLE words (id COUNTER, word VARCHAR(20), used YESNO, "
                      "added DATETIME, notes LONGTEXT)");
        first.execute("CREATE UNIQUE INDEX pk_index ON words (id) WITH PRIMARY");
        first.execute("INSERT INTO words (word, used, added, notes) VALUES ('pear', 0, NULL, "
                      "'ripe')");
        first.execute("INSERT INTO words (word, used, added, notes) VALUES ('fig', -1, "
                      "'2024-05-06 07:08:09', NULL)");
        second.open(connectionText);
    }

    static Recordset openWords(const Connection& connection, LockType lock = LockType::Optimistic) {
        Recordset set;
        set.open("select * from words order by id", connection, CursorType::Keyset, lock);
        return set;
    }

    // The stored row `id` as "word|used|added|notes", read afresh.
    QString stored(int id) {
        Recordset set;
        set.open(u"select word, used, added, notes from words where id = %1"_s.arg(id), first);
        if (set.eof())
            return u"(gone)"_s;
        QStringList cells;
        for (int c = 0; c < set.fieldCount(); ++c) {
            const QVariant value = set.value(c);
            if (value.isNull())
                cells << u"null"_s;
            else if (value.typeId() == QMetaType::Bool)
                cells << (value.toBool() ? u"-1"_s : u"0"_s);
            else if (value.typeId() == QMetaType::QDateTime)
                cells << value.toDateTime().toString(u"yyyy-MM-dd HH:mm:ss");
            else
                cells << value.toString();
        }
        return cells.join(u'|');
    }
};

struct Case {
    const char* name;
    const char* theirColumn; // what the first user changes and saves
    QVariant theirValue;
    const char* ourColumn; // what the second user, reading before that save, changes next
    QVariant ourValue;
    bool conflict;
    const char* storedAfter; // row 1 or 2 afterwards
};

TEST_P(TwoUsers, ASecondSaveFailsOnlyWhenAChangedColumnWasChangedMeanwhile) {
    const QDateTime day(QDate(2025, 1, 2), QTime(3, 4, 5));
    const Case cases[] = {
        {"same column", "word", "plum", "word", "kiwi", true, "plum|0|null|ripe"},
        {"different columns", "word", "plum", "used", true, false, "plum|-1|null|ripe"},
        {"memo column", "notes", "rotten", "notes", "sweet", true, "pear|0|null|rotten"},
        {"letter case only", "word", "PEAR", "word", "kiwi", true, "PEAR|0|null|ripe"},
        {"null filled in", "added", day, "added", QDate(2020, 1, 1), true,
         "pear|0|2025-01-02 03:04:05|ripe"},
        {"null kept, other column", "notes", "rotten", "added", day, false,
         "pear|0|2025-01-02 03:04:05|rotten"},
        {"same value written", "used", false, "used", true, false, "pear|-1|null|ripe"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        first.execute("UPDATE words SET word = 'pear', used = 0, added = NULL, notes = 'ripe' "
                      "WHERE id = 1");
        Recordset theirs = openWords(first);
        Recordset ours = openWords(second); // read before their save
        theirs.setValue(QString::fromLatin1(c.theirColumn), c.theirValue);
        theirs.update();

        ours.setValue(QString::fromLatin1(c.ourColumn), c.ourValue);
        try {
            ours.update();
            EXPECT_FALSE(c.conflict);
        } catch (const Error& error) {
            EXPECT_TRUE(c.conflict);
            EXPECT_EQ(error.number(), errors::RowNotFoundForUpdate);
            EXPECT_EQ(error.description(), ConflictText);
        }
        EXPECT_EQ(stored(1), QString::fromLatin1(c.storedAfter));
        if (c.conflict) {
            // The user's edit stays, for the control to report and the user to decide.
            const int column = ours.fieldIndex(QString::fromLatin1(c.ourColumn));
            EXPECT_EQ(ours.editMode(), EditMode::InProgress);
            EXPECT_NE(ours.value(column), ours.originalValue(column));
            ours.cancelUpdate();
        }
    }
}

TEST_P(TwoUsers, EditsMadeWhileMovingReachTheTable) {
    Recordset set = openWords(first);
    set.setValue("word", "plum");
    set.moveNext(); // writes the edit
    set.deleteCurrent();
    set.addNew();
    set.setValue("word", "kiwi");
    set.setValue("used", true);
    set.update();
    EXPECT_EQ(set.value("id").toInt(), 3) << "the engine's new key is read back";
    EXPECT_EQ(stored(1), "plum|0|null|ripe");
    EXPECT_EQ(stored(2), "(gone)");
    EXPECT_EQ(stored(3), "kiwi|-1|null|null");
}

TEST_P(TwoUsers, RequerySeesTheOtherUsersRowsKeepsTheSortAndMissesNoDeletion) {
    Recordset ours = openWords(first);
    ours.setSort("[word] DESC");
    second.execute("INSERT INTO words (word, used) VALUES ('zucchini', 0)");
    ours.moveLast();
    ours.requery();
    EXPECT_EQ(ours.recordCount(), 3);
    EXPECT_EQ(ours.position(), 0);
    EXPECT_EQ(ours.value("word"), QVariant("zucchini"));

    second.execute("DELETE FROM words WHERE word = 'zucchini'");
    ours.setValue("word", "zebra");
    EXPECT_EQ(errorNumberOf([&] { ours.update(); }), errors::RowNotFoundForUpdate);
}

TEST_P(TwoUsers, ABatchReportsTheConflictingRowAndKeepsTheRestPending) {
    Recordset ours = openWords(second, LockType::BatchOptimistic); // read before their save
    Recordset theirs = openWords(first);
    theirs.moveLast(); // fig
    theirs.setValue("notes", "dried");
    theirs.update();

    ours.setValue("word", "pearl"); // row 1: nobody else touched it
    ours.moveNext();
    ours.setValue("notes", "fresh"); // row 2: changed meanwhile
    ours.moveFirst();
    EXPECT_EQ(errorNumberOf([&] { ours.updateBatch(); }), errors::RowNotFoundForUpdate);
    EXPECT_EQ(ours.value("id").toInt(), 2); // the cursor shows the row that failed
    EXPECT_EQ(stored(1), "pearl|0|null|ripe");
    EXPECT_EQ(stored(2), "fig|-1|2024-05-06 07:08:09|dried");
    // The failed row was not forgotten: it is still pending, and still in conflict.
    EXPECT_EQ(errorNumberOf([&] { ours.updateBatch(); }), errors::RowNotFoundForUpdate);
    EXPECT_EQ(stored(2), "fig|-1|2024-05-06 07:08:09|dried");
}

TEST_P(TwoUsers, ExecuteRunsExactlyOneStatementAsRecordsetOpensDo) {
    const struct {
        const char* sql;
        bool refused;
    } cases[] = {
        {"UPDATE words SET notes = 'a;b' WHERE id = 1", false},
        {"UPDATE words SET used = -1 WHERE id = 1;", false},
        {"UPDATE words SET used = 0 WHERE id = 1; -- done", false},
        {"UPDATE words SET word = 'x' WHERE id = 1; DELETE FROM words", true},
        {"UPDATE words SET word = 'x' WHERE id = 1;;DROP TABLE words", true},
        {"UPDATE words SET [word] = 'y' WHERE id = 2 /* ; */ ; SELECT 1", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sql);
        try {
            first.execute(QString::fromLatin1(c.sql));
            EXPECT_FALSE(c.refused);
        } catch (const Error& error) {
            EXPECT_TRUE(c.refused);
            EXPECT_EQ(error.number(), ErrorNumber::SyntaxError);
            EXPECT_EQ(error.description(), "Characters found after end of SQL statement.");
        }
    }
    // Nothing of a refused text ran, not even its first statement.
    EXPECT_EQ(stored(1), "pear|0|null|a;b");
    EXPECT_EQ(stored(2), "fig|-1|2024-05-06 07:08:09|null");
}

INSTANTIATE_TEST_SUITE_P(Engines, TwoUsers, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto& info) {
                             return info.param == Engine::Sqlite ? "SQLite" : "PostgreSQL";
                         });

} // namespace
