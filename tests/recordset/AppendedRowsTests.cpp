#include "FakeDriver.h"
#include "data/RowStore.h"
#include "data/model/RecordsetModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::column;
using vx::test::FakeDriver;
using vx::test::makeStore;

namespace {

const ColumnList columns = {column("id", DataType::Integer, "t", true),
                            column("name", DataType::VarWChar), column("on", DataType::Boolean),
                            column("at", DataType::Date), column("amount", DataType::Double)};

// Row i of a result: every kind of column, nulls at irregular places.
QVariantList rowOf(int i) {
    return {i, i % 7 == 0 ? QVariant() : QVariant(QStringLiteral("name %1").arg(i)),
            i % 5 == 0 ? QVariant() : QVariant(i % 2 == 0),
            i % 11 == 0 ? QVariant()
                        : QVariant(QStringLiteral("2024-01-%1").arg(1 + i % 28, 2, 10, QChar('0'))),
            i % 3 == 0 ? QVariant() : QVariant(i * 0.5)};
}

std::unique_ptr<RowStore> rowsFrom(int first, int count) {
    QList<QVariantList> rows;
    for (int i = first; i < first + count; ++i)
        rows << rowOf(i);
    return makeStore(columns, rows);
}

TEST(AppendedRows, PiecesAppendedInOrderHoldWhatOneStoreWouldHold) {
    // Piece sizes that start and end inside and on the edges of the 64-row null words.
    const int pieces[] = {1, 63, 64, 65, 3, 128, 7};
    auto whole = rowsFrom(0, 0);
    int next = 0;
    for (const int size : pieces) {
        whole->appendRows(*rowsFrom(next, size));
        next += size;
    }
    const auto expected = rowsFrom(0, next);
    ASSERT_EQ(whole->rowCount(), expected->rowCount());
    for (qsizetype row = 0; row < expected->rowCount(); ++row)
        for (int c = 0; c < expected->columnCount(); ++c)
            ASSERT_EQ(whole->value(row, c), expected->value(row, c)) << row << "," << c;

    RowStore other({column("id", DataType::VarWChar)});
    EXPECT_THROW(whole->appendRows(other), Error);
}

TEST(AppendedRows, ARecordSetReadInPiecesKeepsItsCursorAndTellsTheGrid) {
    Connection connection = FakeDriver::connect();
    Recordset set;
    set.openRead(rowsFrom(0, 10), QStringLiteral("select * from t"), connection, CursorType::Keyset,
                 LockType::Optimistic, QStringLiteral("[id] ASC"));
    EXPECT_EQ(set.sort(), QStringLiteral("[id] ASC")) << "named, already applied";
    RecordsetModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    model.setRecordset(set);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);

    set.moveLast();
    set.moveNext();
    ASSERT_TRUE(set.eof());
    set.appendRows(*rowsFrom(10, 90));
    EXPECT_TRUE(set.eof()) << "past the end stays past the new end";
    EXPECT_EQ(set.recordCount(), 100);
    EXPECT_EQ(model.rowCount(), 100);
    ASSERT_EQ(inserted.size(), 1);
    EXPECT_EQ(inserted.first().at(1).toInt(), 10);
    EXPECT_EQ(inserted.first().at(2).toInt(), 99);
    set.setPosition(50);
    EXPECT_EQ(set.value(0).toInt(), 50);
    EXPECT_EQ(set.positionOf(set.bookmark()), 50);
    // A sort asked for later sorts everything.
    set.setSort(QStringLiteral("[id] DESC"));
    EXPECT_EQ(set.valueAt(0, 0).toInt(), 99);
}

} // namespace
