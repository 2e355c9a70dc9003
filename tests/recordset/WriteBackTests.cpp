#include "FakeDriver.h"
#include "data/Recordset.h"

#include <gtest/gtest.h>

using namespace vx;
using vx::test::column;
using vx::test::errorOf;
using vx::test::FakeDriver;
using vx::test::makeStore;
using vx::test::WriteCall;

namespace {

// Words keyed by id (auto-increment), plus a computed column the engine made up.
std::unique_ptr<RowStore> wordsStore() {
    ColumnInfo id = column("id", DataType::Integer, "words", true);
    id.autoIncrement = true;
    return makeStore({id, column("word", DataType::VarWChar, "words", false, 10),
                      column("used", DataType::Boolean, "words"),
                      column("length", DataType::Integer, QString())},
                     {{1, "apple", true, 5}, {2, "pear", false, 4}, {3, "fig", QVariant(), 3}});
}

struct Fixture : ::testing::Test {
    Connection connection = FakeDriver::connect();
    FakeDriver& fake = FakeDriver::of(connection);
    Recordset set;

    void open(LockType lock, const QString& source = "select * from words") {
        fake.setResult("select * from words", wordsStore);
        fake.setResult("select * from nokey", [] {
            return makeStore(
                {column("a", DataType::Integer, "nokey"), column("b", DataType::VarWChar, "nokey")},
                {{1, "x"}, {1, "y"}});
        });
        fake.setResult("select * from joined", [] {
            return makeStore({column("a", DataType::Integer, "one", true),
                              column("b", DataType::Integer, "two", true)},
                             {{1, 2}});
        });
        set.open(source, connection, CursorType::Keyset, lock);
    }
};

using WriteBack = Fixture;

} // namespace

TEST_F(WriteBack, UpdateSendsChangedColumnsKeyedByOriginalKey) {
    open(LockType::Optimistic);
    EXPECT_TRUE(set.supports(CursorOption::Update));
    set.moveNext(); // pear
    // Refused before anything changes: the engine's key, a computed column, a too long word.
    EXPECT_EQ(errorOf([&] { set.setValue("id", 20); }), ErrorNumber::NotSupported);
    EXPECT_EQ(errorOf([&] { set.setValue("length", 9); }), ErrorNumber::NotSupported);
    EXPECT_EQ(errorOf([&] { set.setValue("word", "elevenchars"); }), ErrorNumber::ValueDoesNotFit);
    EXPECT_EQ(set.editMode(), EditMode::None);

    set.setValue("word", "plum");
    set.setValue("used", "true");
    EXPECT_EQ(set.editMode(), EditMode::InProgress);
    EXPECT_EQ(set.originalValue(1), QVariant("pear"));
    EXPECT_TRUE(fake.calls.isEmpty());
    set.update();
    ASSERT_EQ(fake.calls.size(), 1);
    const WriteCall& call = fake.calls[0];
    EXPECT_EQ(call.kind, WriteCall::Update);
    EXPECT_EQ(call.table, "words");
    EXPECT_EQ(call.columns, (QStringList{"word", "used"}));
    EXPECT_EQ(call.values, (QVariantList{"plum", qint64(-1)})); // Yes is stored as -1
    EXPECT_EQ(call.keyColumns, QStringList{"id"});
    EXPECT_EQ(call.keyValues, QVariantList{2});
    // Optimistic locking: the changed columns must still hold what was read.
    EXPECT_EQ(call.checkColumns, (QStringList{"word", "used"}));
    EXPECT_EQ(call.checkValues, (QVariantList{"pear", qint64(0)}));
    EXPECT_EQ(set.editMode(), EditMode::None);
    EXPECT_EQ(set.value("word"), QVariant("plum"));
    EXPECT_EQ(set.value("used"), QVariant(true));
}

TEST_F(WriteBack, TableWithoutKeyIsFoundByAllOriginalValues) {
    open(LockType::Optimistic, "select * from nokey");
    set.moveNext();
    set.setValue("b", "z");
    set.setValue("a", 7);
    set.update();
    ASSERT_EQ(fake.calls.size(), 1);
    EXPECT_EQ(fake.calls[0].keyColumns, (QStringList{"a", "b"}));
    EXPECT_EQ(fake.calls[0].keyValues, (QVariantList{1, "y"}));
    EXPECT_EQ(fake.calls[0].values, (QVariantList{7, "z"}));

    set.deleteCurrent();
    ASSERT_EQ(fake.calls.size(), 2);
    EXPECT_EQ(fake.calls[1].kind, WriteCall::Delete);
    EXPECT_EQ(fake.calls[1].keyValues, (QVariantList{7, "z"})); // what the table now holds
}

TEST_F(WriteBack, MovingAwayWritesTheEditCancellingPutsItBackAndANewRowGoes) {
    open(LockType::Optimistic);
    set.setValue("word", "apricot");
    set.moveNext();
    ASSERT_EQ(fake.calls.size(), 1);
    EXPECT_EQ(fake.calls[0].keyValues, QVariantList{1});
    EXPECT_EQ(set.value("word"), QVariant("pear"));

    set.addNew();
    EXPECT_EQ(set.recordCount(), 4);
    set.moveFirst();
    EXPECT_EQ(set.recordCount(), 3);
    EXPECT_EQ(fake.calls.size(), 1); // nothing inserted
    EXPECT_EQ(set.value("word"), QVariant("apricot"));

    fake.calls.clear();
    set.moveNext();
    set.setValue("word", "plum");
    set.cancelUpdate();
    EXPECT_EQ(set.value("word"), QVariant("pear"));
    EXPECT_EQ(set.editMode(), EditMode::None);

    set.addNew();
    set.setValue("word", "kiwi");
    set.cancelUpdate();
    EXPECT_EQ(set.recordCount(), 3);
    EXPECT_EQ(set.value("word"), QVariant("pear")); // back where it was before the add
    set.moveNext();
    set.moveNext();
    EXPECT_TRUE(set.eof());
    EXPECT_TRUE(fake.calls.isEmpty());
}

TEST_F(WriteBack, AddNewInsertsAndTakesTheEnginesKey) {
    open(LockType::Optimistic);
    set.setSort("word");
    set.addNew();
    EXPECT_EQ(set.editMode(), EditMode::Add);
    EXPECT_EQ(set.position(), 3); // new rows go to the end, whatever the sort
    set.setValue("word", "kiwi");
    set.update();
    ASSERT_EQ(fake.calls.size(), 1);
    const WriteCall& call = fake.calls[0];
    EXPECT_EQ(call.kind, WriteCall::Insert);
    EXPECT_EQ(call.columns, QStringList{"word"});
    EXPECT_EQ(call.values, QVariantList{"kiwi"});
    EXPECT_EQ(call.autoIncrementColumn, "id");
    EXPECT_EQ(set.value("id"), QVariant(100));
    EXPECT_EQ(set.originalValue(0), QVariant(100));
    const Bookmark mark = set.bookmark();
    set.setSort("word DESC");
    set.setBookmark(mark);
    EXPECT_EQ(set.value("word"), QVariant("kiwi"));
    EXPECT_EQ(set.recordCount(), 4);
}

TEST_F(WriteBack, FailedWritesKeepTheEdit) {
    open(LockType::Optimistic);
    set.setValue("word", "apricot");
    fake.failNextWrite = Error(ErrorNumber::IntegrityViolation, "constraint failed");
    EXPECT_EQ(errorOf([&] { set.moveNext(); }), ErrorNumber::IntegrityViolation);
    EXPECT_EQ(set.position(), 0); // did not move
    EXPECT_EQ(set.editMode(), EditMode::InProgress);
    set.update();
    EXPECT_EQ(fake.calls.size(), 1);

    fake.affectedRows = 0; // someone else deleted it meanwhile
    set.setValue("word", "avocado");
    EXPECT_EQ(errorOf([&] { set.update(); }), errors::RowNotFoundForUpdate);
    EXPECT_EQ(errorOf([&] { set.deleteCurrent(); }), errors::RowNotFoundForUpdate);
    EXPECT_EQ(set.recordCount(), 3);
}

TEST_F(WriteBack, BatchChangesWaitForUpdateBatchAndGoInOrder) {
    open(LockType::BatchOptimistic);
    // Made in an order unlike the rows' order: delete the second, change the first, add one.
    set.moveNext();
    set.deleteCurrent(); // pear
    EXPECT_EQ(set.editMode(), EditMode::Delete);
    set.moveFirst();
    set.setValue("word", "apricot");
    set.addNew();
    set.setValue("word", "kiwi");
    set.moveFirst();
    set.setValue("used", false); // a second edit of the first row joins its pending update
    set.moveLast();
    EXPECT_TRUE(fake.calls.isEmpty());
    EXPECT_EQ(set.recordCount(), 3);

    set.updateBatch();
    ASSERT_EQ(fake.calls.size(), 3);
    EXPECT_EQ(fake.calls[0].kind, WriteCall::Delete);
    EXPECT_EQ(fake.calls[0].keyValues, QVariantList{2});
    EXPECT_EQ(fake.calls[1].kind, WriteCall::Update);
    EXPECT_EQ(fake.calls[1].columns, (QStringList{"word", "used"}));
    EXPECT_EQ(fake.calls[1].values, (QVariantList{"apricot", qint64(0)}));
    EXPECT_EQ(fake.calls[1].keyValues, QVariantList{1});
    EXPECT_EQ(fake.calls[2].kind, WriteCall::Insert);
    EXPECT_EQ(fake.calls[2].values, QVariantList{"kiwi"});
    EXPECT_EQ(set.value("id"), QVariant(100));

    set.updateBatch(); // nothing left
    EXPECT_EQ(fake.calls.size(), 3);
}

TEST_F(WriteBack, BatchStopsAtAFailureAndKeepsTheRest) {
    open(LockType::BatchOptimistic);
    set.setValue("word", "apricot");
    set.moveNext();
    set.setValue("word", "plum");
    set.moveNext();
    fake.affectedRows = 0;
    EXPECT_EQ(errorOf([&] { set.updateBatch(); }), errors::RowNotFoundForUpdate);
    fake.affectedRows = 1;
    fake.calls.clear();
    set.updateBatch(); // both are still pending: the failed one was not forgotten
    EXPECT_EQ(fake.calls.size(), 2);
}

TEST_F(WriteBack, CancelBatchRestoresEverythingAndRequeryWaitsForIt) {
    open(LockType::BatchOptimistic);
    set.setValue("word", "apricot");
    set.moveNext();
    set.deleteCurrent();
    set.addNew();
    set.setValue("word", "kiwi");
    set.update();
    EXPECT_EQ(errorOf([&] { set.requery(); }), errors::NotAllowedInContext) << "changes pending";
    set.cancelBatch();
    EXPECT_EQ(set.recordCount(), 3);
    EXPECT_EQ(set.position(), 0);
    QStringList words;
    for (qsizetype p = 0; p < set.recordCount(); ++p)
        words << set.valueAt(p, 1).toString();
    EXPECT_EQ(words, (QStringList{"apple", "pear", "fig"}));
    set.updateBatch();
    EXPECT_TRUE(fake.calls.isEmpty());
}

TEST_F(WriteBack, ReadOnlyAndMultiTableResultsRefuseEdits) {
    for (const auto& [lock, source] :
         {std::pair{LockType::ReadOnly, QString("select * from words")},
          std::pair{LockType::Optimistic, QString("select * from joined")}}) {
        open(lock, source);
        for (auto option : {CursorOption::AddNew, CursorOption::Update, CursorOption::Delete})
            EXPECT_FALSE(set.supports(option)) << source.toStdString();
        EXPECT_TRUE(set.supports(CursorOption::Bookmark));
        EXPECT_FALSE(set.isColumnUpdatable(0));
        EXPECT_EQ(errorOf([&] { set.setValue(1, 5); }), ErrorNumber::NotSupported);
        EXPECT_EQ(errorOf([&] { set.addNew(); }), ErrorNumber::NotSupported);
        EXPECT_EQ(errorOf([&] { set.deleteCurrent(); }), ErrorNumber::NotSupported);
    }
    EXPECT_TRUE(fake.calls.isEmpty());
}

TEST_F(WriteBack, SubscribersHearEveryChange) {
    open(LockType::Optimistic);
    QList<QPair<int, qsizetype>> heard;
    const int id = set.subscribe([&](const RecordsetChange& change) {
        heard << qMakePair(int(change.kind), change.position);
    });
    set.moveNext();
    set.setValue("word", "plum");
    set.addNew(); // the edit is written first
    set.cancelUpdate();
    set.deleteCurrent();
    set.setSort("id");
    set.unsubscribe(id);
    set.moveLast();
    using C = RecordsetChange;
    const QList<QPair<int, qsizetype>> expected = {
        {C::CurrentMoved, 1},                              // moveNext
        {C::RowChanged, 1},                                // setValue
        {C::RowAboutToBeInserted, 3}, {C::RowInserted, 3}, // addNew
        {C::CurrentMoved, 3},         {C::RowAboutToBeRemoved, 3},
        {C::RowRemoved, 3}, // cancelUpdate
        {C::CurrentMoved, 1},         {C::RowAboutToBeRemoved, 1},
        {C::RowRemoved, 1},                            // deleteCurrent
        {C::AboutToReset, -1},        {C::Reset, -1}}; // setSort
    EXPECT_EQ(heard, expected);
}
