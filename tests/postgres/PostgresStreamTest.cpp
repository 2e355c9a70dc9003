#include "data/ResultStream.h"
#include "support/EngineDatabase.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

using PostgresStream = PostgresDatabase;

// Every value the stream reads (in the server's binary format where it can) equals the value
// a whole read (text format) gives, cell by cell, nulls included.
void expectSameCells(const RowStore& streamed, const RowStore& whole) {
    ASSERT_EQ(streamed.columnCount(), whole.columnCount());
    ASSERT_EQ(streamed.rowCount(), whole.rowCount());
    for (int column = 0; column < whole.columnCount(); ++column) {
        EXPECT_EQ(streamed.columns()[column].type, whole.columns()[column].type) << column;
        for (qsizetype row = 0; row < whole.rowCount(); ++row) {
            const QVariant a = streamed.value(row, column);
            const QVariant b = whole.value(row, column);
            if (b.typeId() == QMetaType::Double && std::isnan(b.toDouble()))
                EXPECT_TRUE(std::isnan(a.toDouble())) << row << "," << column;
            else
                EXPECT_EQ(a, b) << "row " << row << " column " << column << ": "
                                << a.toString().toStdString() << " vs "
                                << b.toString().toStdString();
        }
    }
}

std::unique_ptr<RowStore> readInPieces(ResultStream& stream, qsizetype piece) {
    auto rows = std::make_unique<RowStore>(stream.columns());
    while (stream.fetch(*rows, piece) > 0) {
    }
    EXPECT_TRUE(stream.atEnd());
    return rows;
}

// One row per case, every column type the binary reading decodes.
const QString TypedValues =
    u"SELECT * FROM (VALUES "
    "(1, CAST(-32768 AS int2), CAST(-2147483648 AS int4), CAST(-9223372036854775807 AS int8), "
    " CAST(0.1 AS float4), CAST(-1.5e300 AS float8), CAST(-1234.5678 AS numeric(19,4)), "
    " CAST(-0.000123 AS numeric), CAST('1969-07-20' AS date), "
    " CAST('1901-12-13 20:45:52.999' AS timestamp), CAST('23:59:59.9' AS time), TRUE, "
    " CAST('Ärger é' AS varchar(20)), CAST('ab' AS char(4)), CAST('x' AS text), "
    " CAST('\\x00ff10' AS bytea)), "
    "(2, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, "
    " NULL), "
    "(3, 32767, 2147483647, 9223372036854775807, CAST(3.4e38 AS float4), CAST('NaN' AS float8), "
    " CAST(99999999999999.9999 AS numeric(19,4)), CAST('123456789012345678901234567890.5' AS "
    " numeric), CAST('2038-01-19' AS date), CAST('2099-12-31 23:59:59' AS timestamp), "
    " CAST('00:00:00' AS time), FALSE, '', '', '', CAST('' AS bytea)), "
    "(4, 0, 0, 0, CAST('-Infinity' AS float4), CAST('Infinity' AS float8), CAST(0 AS "
    "numeric(19,4)), "
    " CAST('NaN' AS numeric), CAST('infinity' AS date), CAST('-infinity' AS timestamp), "
    " CAST('12:00:00' AS time), FALSE, 'z', 'z', 'z', CAST('z' AS bytea)), "
    "(5, -1, -1, -1, CAST(-0.0 AS float4), CAST(5e-324 AS float8), CAST(0.0001 AS numeric(19,4)), "
    " CAST(1e-20 AS numeric), CAST('0001-01-01' AS date), CAST('1970-01-01 00:00:00' AS "
    " timestamp), CAST('06:30:15' AS time), TRUE, 'a', 'a', 'a', CAST('a' AS bytea)) "
    ") AS v(k, i2, i4, i8, f4, f8, cur, num, d, ts, t, b, vc, ch, tx, bin) ORDER BY k"_s;

TEST_F(PostgresStream, BinaryCellsReadAsTheirTextDoes) {
    const auto whole = driver().select(TypedValues);
    ASSERT_EQ(whole->rowCount(), 5);
    // Pieces of two rows: a piece ends inside the result and the last one is short.
    Connection reader = connect();
    auto stream = reader.driver().openStream(TypedValues);
    expectSameCells(*readInPieces(*stream, 2), *whole);

    // The text reading itself is right on the cases the binary one is easiest to get wrong.
    EXPECT_EQ(whole->value(0, 3).toLongLong(), -9223372036854775807LL);
    EXPECT_EQ(whole->value(0, 6).toDouble(), -1234.5678);
    EXPECT_EQ(whole->value(0, 7).toDouble(), -0.000123);
    EXPECT_EQ(whole->value(0, 8).toDateTime(), QDateTime(QDate(1969, 7, 20), QTime(0, 0)));
    EXPECT_EQ(whole->value(0, 9).toDateTime(), QDateTime(QDate(1901, 12, 13), QTime(20, 45, 52)));
    EXPECT_EQ(whole->value(0, 10).toDateTime(), QDateTime(QDate(1899, 12, 30), QTime(23, 59, 59)));
    EXPECT_EQ(whole->value(0, 12).toString(), u"Ärger é");
    EXPECT_EQ(whole->value(2, 8).toDateTime(), QDateTime(QDate(2038, 1, 19), QTime(0, 0)));
    EXPECT_EQ(whole->value(2, 6).toDouble(), 99999999999999.9999);
    EXPECT_EQ(whole->value(2, 7).toDouble(), 123456789012345678901234567890.5);
    EXPECT_TRUE(whole->isNull(3, 8));
    EXPECT_TRUE(whole->isNull(3, 9));
    EXPECT_EQ(whole->value(4, 8).toDateTime(), QDateTime(QDate(1, 1, 1), QTime(0, 0)));
    for (int column = 1; column < whole->columnCount(); ++column)
        EXPECT_TRUE(whole->isNull(1, column)) << column;
}

TEST_F(PostgresStream, PiecesOfEverySizeGiveTheWholeResultInOrder) {
    driver().execute(u"CREATE TABLE Many ([id] LONG, [label] VARCHAR(20))"_s);
    driver().execute(u"INSERT INTO Many (id, label) SELECT g, 'row ' || g FROM "
                     "generate_series(1, 1000) AS g"_s);
    const QString query = u"SELECT id, label FROM Many ORDER BY id DESC"_s;
    const auto whole = driver().select(query);
    Connection reader = connect();
    for (const qsizetype piece : {1, 7, 999, 1000, 1001, 4096}) {
        auto stream = reader.driver().openStream(query);
        SCOPED_TRACE(piece);
        expectSameCells(*readInPieces(*stream, piece), *whole);
    }
    // Dropped part-way (the next piece already asked for), the connection serves the next one.
    {
        auto stream = reader.driver().openStream(query);
        EXPECT_EQ(stream->read(10)->rowCount(), 10);
    }
    EXPECT_EQ(reader.driver().select(u"SELECT count(*) FROM Many"_s)->value(0, 0).toInt(), 1000);
}

TEST_F(PostgresStream, AnOrderAskedOfTheServerMatchesTheRecordSetsOrder) {
    driver().execute(u"CREATE TABLE Ordered ([id] LONG, [amount] CURRENCY, [day] DATETIME)"_s);
    driver().execute(u"INSERT INTO Ordered (id, amount, day) VALUES (1, 5, NULL), (2, NULL, "
                     "'1960-01-01'), (3, -2.5, '2040-06-01'), (4, 5, '1999-12-31')"_s);
    Connection reader = connect();
    for (const bool descending : {false, true}) {
        auto stream = reader.driver().openStream(u"SELECT id, amount, day FROM Ordered"_s);
        ASSERT_TRUE(stream->orderBy({{1, descending}, {2, descending}}));
        const auto rows = readInPieces(*stream, 3);
        QList<int> ids;
        for (qsizetype row = 0; row < rows->rowCount(); ++row)
            ids << rows->value(row, 0).toInt();
        // Nulls first ascending, last descending, as the record set sorts.
        EXPECT_EQ(ids, descending ? QList<int>({4, 1, 3, 2}) : QList<int>({2, 3, 1, 4}));
    }
}

} // namespace
} // namespace vx::test
