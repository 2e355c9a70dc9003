#include "FakeDriver.h"
#include "data/Recordset.h"

#include <gtest/gtest.h>

using namespace vx;
using namespace Qt::StringLiterals;
using vx::test::column;
using vx::test::errorOf;
using vx::test::FakeDriver;
using vx::test::makeStore;

namespace {

Recordset numbers(int count) {
    QList<QVariantList> rows;
    for (int i = 1; i <= count; ++i)
        rows << QVariantList{i, u"name %1"_s.arg(i)};
    return Recordset::fromRows(
        makeStore({column("id", DataType::Integer), column("name", DataType::VarWChar)}, rows));
}

} // namespace

TEST(Navigation, EmptySetHasBothEndsAndRefusesEveryMove) {
    Recordset empty = numbers(0);
    EXPECT_TRUE(empty.bof());
    EXPECT_TRUE(empty.eof());
    EXPECT_EQ(empty.recordCount(), 0);
    EXPECT_EQ(empty.position(), -1);
    for (auto move : {&Recordset::moveFirst, &Recordset::moveLast, &Recordset::moveNext,
                      &Recordset::movePrevious}) {
        EXPECT_EQ(errorOf([&] { (empty.*move)(); }), ErrorNumber::NoCurrentRecord);
    }
    EXPECT_EQ(errorOf([&] { empty.value(0); }), ErrorNumber::NoCurrentRecord);
}

TEST(Navigation, EndsAreReachedThenMovingFurtherFails) {
    Recordset set = numbers(3);
    EXPECT_FALSE(set.bof());
    EXPECT_FALSE(set.eof());
    EXPECT_EQ(set.value(0), QVariant(1));

    set.movePrevious();
    EXPECT_TRUE(set.bof());
    EXPECT_FALSE(set.eof());
    EXPECT_EQ(errorOf([&] { set.movePrevious(); }), ErrorNumber::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { set.value(0); }), ErrorNumber::NoCurrentRecord);
    set.moveNext(); // from BOF onto the first row
    EXPECT_EQ(set.value("ID"), QVariant(1));

    set.moveLast();
    EXPECT_EQ(set.position(), 2);
    set.moveNext();
    EXPECT_TRUE(set.eof());
    EXPECT_FALSE(set.bof());
    EXPECT_EQ(errorOf([&] { set.moveNext(); }), ErrorNumber::NoCurrentRecord);
    set.movePrevious(); // back from EOF onto the last row
    EXPECT_EQ(set.value(0), QVariant(3));

    set.moveFirst();
    set.move(10);
    EXPECT_TRUE(set.eof());
    set.move(-2);
    EXPECT_EQ(set.value(0), QVariant(2));
    set.move(-5);
    EXPECT_TRUE(set.bof());

    EXPECT_EQ(errorOf([&] { set.setPosition(3); }), ErrorNumber::InvalidArgument);
    set.setPosition(1);
    EXPECT_EQ(set.field("name").value(), QVariant("name 2"));
    EXPECT_EQ(errorOf([&] { set.field("missing"); }), ErrorNumber::ItemNotFound);
    EXPECT_EQ(errorOf([&] { set.value(7); }), ErrorNumber::ItemNotFound);
}

TEST(Navigation, CopiesShareOneCursorAndFieldsOutliveTheirHandle) {
    Recordset first = numbers(3);
    Recordset second = first;
    second.moveNext();
    EXPECT_EQ(first.position(), 1);

    Field field = [&] {
        Recordset temporary = first;
        return temporary.field("id");
    }();
    first.moveLast();
    EXPECT_EQ(field.value(), QVariant(3));
    EXPECT_EQ(field.type(), DataType::Integer);

    first.close();
    EXPECT_FALSE(second.isOpen());
    EXPECT_EQ(errorOf([&] { second.eof(); }), ErrorNumber::ObjectClosed);
}

TEST(Navigation, DeletingKeepsBookmarksOfOtherRowsAndMovesOnLikeThePlatform) {
    Connection connection = FakeDriver::connect();
    FakeDriver::of(connection).setResult("select * from t", [] {
        QList<QVariantList> rows;
        for (int i = 1; i <= 4; ++i)
            rows << QVariantList{i};
        return makeStore({column("id", DataType::Integer, "t", true)}, rows);
    });
    Recordset set;
    set.open("select * from t", connection, CursorType::Keyset, LockType::Optimistic);

    set.setPosition(2);
    const Bookmark third = set.bookmark();
    set.setPosition(3);
    const Bookmark fourth = set.bookmark();
    set.moveFirst();
    const Bookmark first = set.bookmark();

    set.setBookmark(third);
    set.deleteCurrent();
    // On the deleted row: no current record, but not at an end either.
    EXPECT_FALSE(set.eof());
    EXPECT_FALSE(set.bof());
    EXPECT_EQ(errorOf([&] { set.value(0); }), ErrorNumber::NoCurrentRecord);
    EXPECT_EQ(set.recordCount(), 3);
    set.moveNext();
    EXPECT_EQ(set.value(0), QVariant(4)); // the row after the deleted one

    EXPECT_EQ(set.positionOf(third), -1);
    EXPECT_EQ(set.positionOf(fourth), 2);
    EXPECT_EQ(set.positionOf(first), 0);
    EXPECT_EQ(errorOf([&] { set.setBookmark(third); }), errors::BookmarkInvalid);
    set.setBookmark(first);
    EXPECT_EQ(set.value(0), QVariant(1));

    // Deleting everything the usual way ends with both flags set.
    set.moveFirst();
    while (!set.eof()) {
        set.deleteCurrent();
        set.moveNext();
    }
    EXPECT_TRUE(set.bof());
    EXPECT_EQ(set.recordCount(), 0);
    EXPECT_EQ(FakeDriver::of(connection).calls.size(), 4);
}

TEST(Navigation, FindScansStoredValues) {
    auto store = makeStore({column("id", DataType::Integer), column("name", DataType::VarWChar),
                            column("when", DataType::Date), column("flag", DataType::Boolean)},
                           {{1, "Alpha", "2024-01-01", true},
                            {2, "beta", QVariant(), false},
                            {3, QVariant(), "2024-02-01", false},
                            {4, QString::fromUtf8("Ärger"), "2024-01-01", true},
                            {5, "BETA", "2024-03-01", true}});
    Recordset set = Recordset::fromRows(std::move(store));
    EXPECT_EQ(set.find(1, "BETA"), 1);
    EXPECT_EQ(set.find(1, "BETA", 2), 4);
    EXPECT_EQ(set.find(1, "beta", 0, Qt::CaseSensitive), 1);
    EXPECT_EQ(set.find(1, "Beta", 0, Qt::CaseSensitive), -1);
    EXPECT_EQ(set.find(1, QString::fromUtf8("äRGER")), 3);
    EXPECT_EQ(set.find(1, "bet"), -1);
    EXPECT_EQ(set.find(1, QVariant()), 2);
    EXPECT_EQ(set.find(0, "3"), 2);
    EXPECT_EQ(set.find(0, "x"), -1); // cannot be an integer: no match, no error
    EXPECT_EQ(set.find(2, QDate(2024, 1, 1), 1), 3);
    EXPECT_EQ(set.find(3, false), 1);
    EXPECT_EQ(set.find(3, true, 1), 3);

    set.setSort("id DESC");
    EXPECT_EQ(set.find(1, "beta"), 0); // positions follow the current order
}
