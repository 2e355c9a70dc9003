#include "FakeDriver.h"
#include "data/model/RecordsetModel.h"
#include "session/LocaleScope.h"

#include <QAbstractItemModelTester>
#include <QLocale>
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::column;
using vx::test::FakeDriver;
using vx::test::makeStore;
using vx::test::WriteCall;

namespace {

struct Model : ::testing::Test {
    Connection connection = FakeDriver::connect();
    FakeDriver& fake = FakeDriver::of(connection);
    Recordset set;
    RecordsetModel model;
    // Checks the model's signals and counts stay consistent through every step.
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    test::LocaleScope locale{QLocale(QLocale::English, QLocale::UnitedStates)};

    void SetUp() override {
        fake.setResult("select * from items", [] {
            return makeStore({column("itemid", DataType::Integer, "items", true),
                              column("title", DataType::VarWChar, "items", false, 8),
                              column("deleted", DataType::Boolean, "items"),
                              column("idx_date", DataType::Date, "items"),
                              column("rank", DataType::Integer, QString())},
                             {{1, "Invoice", false, "2024-03-05 14:30:00", 3},
                              {2, "Receipt", true, "2023-12-24", 1},
                              {3, QVariant(), QVariant(), QVariant(), 2}});
        });
        set.open("select * from items", connection, CursorType::Keyset, LockType::Optimistic);
        model.setRecordset(set);
    }

    QString text(int row, int column) { return model.displayText(row, column); }
};

} // namespace

TEST_F(Model, ShowsHeadersAndFormattedCells) {
    ASSERT_EQ(model.rowCount(), 3);
    ASSERT_EQ(model.columnCount(), 5);
    EXPECT_EQ(model.headerData(1, Qt::Horizontal).toString(), "title");
    EXPECT_EQ(text(0, 1), "Invoice");
    EXPECT_EQ(text(0, 2), "No"); // Yes/No columns by default
    EXPECT_EQ(text(1, 2), "Yes");
    EXPECT_EQ(text(2, 2), "");
    EXPECT_EQ(text(0, 3), "3/5/2024 2:30:00 PM");
    EXPECT_EQ(text(1, 3), "12/24/2023");

    model.setColumnFormat(3, RecordsetModel::ShortDate);
    model.setColumnFormat(4, RecordsetModel::YesNo); // any number shows as Yes/No
    EXPECT_EQ(text(0, 3), "3/5/2024");
    EXPECT_EQ(text(0, 4), "Yes");
    model.setColumnFormat(2, QString());
    EXPECT_EQ(text(1, 2), "True");
    // Raw values for editors.
    EXPECT_EQ(model.data(model.index(1, 2), Qt::EditRole), QVariant(true));
    EXPECT_EQ(model.data(model.index(0, 3), Qt::EditRole).toDateTime(),
              QDateTime(QDate(2024, 3, 5), QTime(14, 30)));

    // Formats survive a sort, which resets the model.
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    set.setSort("itemid DESC");
    EXPECT_EQ(resets.count(), 1);
    EXPECT_EQ(text(0, 0), "3");
    EXPECT_EQ(text(2, 3), "3/5/2024");
}

TEST_F(Model, EditsGoThroughTheRecordSet) {
    EXPECT_TRUE(model.flags(model.index(0, 1)) & Qt::ItemIsEditable);
    EXPECT_FALSE(model.flags(model.index(0, 4)) & Qt::ItemIsEditable); // computed
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy errors(&model, &RecordsetModel::errorOccurred);

    EXPECT_TRUE(model.setData(model.index(1, 1), "Memo"));
    ASSERT_EQ(fake.calls.size(), 1);
    EXPECT_EQ(fake.calls[0].kind, WriteCall::Update);
    EXPECT_EQ(fake.calls[0].keyValues, QVariantList{2});
    EXPECT_EQ(text(1, 1), "Memo");
    EXPECT_GE(changed.count(), 1);
    EXPECT_EQ(set.position(), 1);

    // Too long for the column: refused, reported, and nothing left half-edited.
    EXPECT_FALSE(model.setData(model.index(0, 1), "Much too long"));
    ASSERT_EQ(errors.count(), 1);
    EXPECT_EQ(errors[0][0].toString(),
              "Multiple-step operation generated errors. Check each status value.");
    EXPECT_EQ(set.editMode(), EditMode::None);
    EXPECT_EQ(text(0, 1), "Invoice");

    // A failing engine: the row keeps what the table has.
    fake.failNextWrite = Error(ErrorNumber::IntegrityViolation, "duplicate");
    EXPECT_FALSE(model.setData(model.index(0, 1), "Dup"));
    EXPECT_EQ(errors.count(), 2);
    EXPECT_EQ(errors[1][0].toString(), "duplicate");
    EXPECT_EQ(text(0, 1), "Invoice");
    EXPECT_EQ(fake.calls.size(), 1);
}

TEST_F(Model, RowsAreAddedAtTheEndAndRemoved) {
    EXPECT_FALSE(model.insertRows(0, 1)); // only at the end
    ASSERT_TRUE(model.insertRows(3, 1));
    EXPECT_EQ(model.rowCount(), 4);
    EXPECT_TRUE(fake.calls.isEmpty()); // nothing is written until a value is
    ASSERT_TRUE(model.setData(model.index(3, 1), "Letter"));
    ASSERT_EQ(fake.calls.size(), 1);
    EXPECT_EQ(fake.calls[0].kind, WriteCall::Insert);
    EXPECT_EQ(fake.calls[0].values, QVariantList{"Letter"});

    const Bookmark letter = model.bookmarkForRow(3);
    const Bookmark receipt = model.bookmarkForRow(1);
    ASSERT_TRUE(model.removeRows(0, 2));
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(fake.calls.size(), 3);
    EXPECT_EQ(fake.calls[1].keyValues, QVariantList{1});
    EXPECT_EQ(fake.calls[2].keyValues, QVariantList{2});
    EXPECT_EQ(model.rowForBookmark(receipt), -1);
    EXPECT_EQ(model.rowForBookmark(letter), 1);

    // An added row left empty disappears when the user moves on.
    ASSERT_TRUE(model.insertRows(2, 1));
    set.moveFirst();
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(fake.calls.size(), 3);
}

TEST_F(Model, BookmarksMapRowsAcrossSortAndRequery) {
    const Bookmark second = model.bookmarkForRow(1);
    model.sort(0, Qt::DescendingOrder);
    EXPECT_EQ(set.sort(), "[itemid] DESC");
    EXPECT_EQ(model.rowForBookmark(second), 1);
    EXPECT_EQ(model.data(model.index(model.rowForBookmark(second), 1)).toString(), "Receipt");
    EXPECT_EQ(model.bookmarkForRow(7), 0);

    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    set.requery();
    EXPECT_EQ(resets.count(), 1);
    EXPECT_EQ(model.data(model.index(model.rowForBookmark(second), 1)).toString(), "Receipt");

    // A closed record set shows nothing.
    set.close();
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.columnCount(), 0);
}
