#include "data/RowAppender.h"

#include "DbfReadBack.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/dbf/Cp1252.h"
#include "data/dbf/DbfValues.h"
#include "support/ErrorNumberOf.h"

#include <QDate>
#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>
#include <cmath>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace vx;
using namespace vx::test;

namespace {

// Enough rows with long memos that both files pass through several write buffers.
QVariantList personRow(int i) {
    const QString memo =
        i % 7 == 0 ? QString() : u"memo %1 caf\u00e9 \u20ac "_s.arg(i).repeated(20);
    return {i % 11 == 0 ? QVariant() : QVariant(i * 37 - 5000),
            QDate(1900, 1, 1).addDays(i * 13),
            u"n\u00e4me%1"_s.arg(i),
            u"w"_s.repeated(i % 254 + 1),
            memo.isEmpty() ? QVariant() : QVariant(memo),
            i % 3 == 0,
            (i % 400) / 8.0 - 25.0};
}

std::span<const QVariant> spanOf(const QVariantList& values) {
    return {values.constData(), size_t(values.size())};
}

QByteArray fieldText(const dbf::FieldDescriptor& field, const QVariant& value) {
    QByteArray out(field.length, ' ');
    dbf::writeFieldValue(out.data(), field, value);
    return out;
}

} // namespace

TEST(RowAppender, FoxProTableMatchesTheRecordSetsByteForByteAcrossManyBuffers) {
    QTemporaryDir folder;
    Connection connection;
    connection.open(foxProConnectionText(folder.path()));
    connection.execute(createPeople(u"bySet"_s));
    connection.execute(createPeople(u"byAppender"_s));
    constexpr int rows = 6000;

    Recordset table;
    table.open(u"bySet"_s, connection, CursorType::Keyset, LockType::Optimistic,
               CommandType::TableDirect);
    const std::unique_ptr<RowAppender> appender =
        connection.appendRows(u"byAppender"_s, peopleColumns);
    for (int i = 0; i < rows; ++i) {
        const QVariantList row = personRow(i);
        appendPerson(table, row);
        appender->append(spanOf(row));
    }
    appender->finish();
    table.close();
    connection.close();

    const QDir dir(folder.path());
    const QByteArray bySet = fileBytes(dir.filePath(u"bySet.dbf"_s));
    const QByteArray byAppender = fileBytes(dir.filePath(u"byAppender.dbf"_s));
    EXPECT_GT(byAppender.size(), 1 << 20) << "more than one write buffer";
    EXPECT_EQ(qFromLittleEndian<quint32>(byAppender.constData() + 4), quint32(rows));
    EXPECT_TRUE(bySet == byAppender);
    const QByteArray setMemo = fileBytes(dir.filePath(u"bySet.fpt"_s));
    EXPECT_GT(setMemo.size(), 1 << 20);
    EXPECT_TRUE(setMemo == fileBytes(dir.filePath(u"byAppender.fpt"_s)));

    Connection again;
    again.open(foxProConnectionText(folder.path()));
    Recordset reread;
    reread.open(u"select * from byAppender"_s, again);
    ASSERT_EQ(reread.recordCount(), rows);
    reread.moveLast();
    const QVariantList last = personRow(rows - 1);
    EXPECT_EQ(reread.value(u"notes"_s).toString(), last[4].toString());
    EXPECT_EQ(reread.value(u"born"_s).toDateTime().date(), last[1].toDate());
    EXPECT_EQ(last[6].toDouble(), 24.875);
    EXPECT_EQ(reread.value(u"ratio"_s).toDouble(), 24.88) << "N(8,2), the half away from zero";
}

TEST(RowAppender, RefusesBadColumnsCountsAndValuesAndAClosedConnection) {
    QTemporaryDir folder;
    Connection connection;
    connection.open(foxProConnectionText(folder.path()));
    connection.execute(u"CREATE TABLE t(n NUMERIC(4,1),m MEMO);"_s);
    EXPECT_EQ(errorNumberOf([&] {
                  connection.appendRows(u"t"_s, {u"n"_s, u"nosuch"_s});
              }),
              ErrorNumber::ColumnNotFound);
    EXPECT_EQ(errorNumberOf([&] { connection.appendRows(u"absent"_s, {u"n"_s}); }),
              ErrorNumber::TableNotFound);

    const std::unique_ptr<RowAppender> appender = connection.appendRows(u"t"_s, {u"n"_s, u"m"_s});
    EXPECT_EQ(errorNumberOf([&] { appender->append(spanOf({1})); }), ErrorNumber::InvalidArgument);
    EXPECT_EQ(errorNumberOf([&] {
                  appender->append(spanOf({123456.0, u"lost"_s}));
              }),
              ErrorNumber::ValueDoesNotFit);
    appender->append(spanOf({99.5, u"kept"_s}));
    appender->finish();
    EXPECT_EQ(qFromLittleEndian<quint32>(fileBytes(folder.filePath(u"t.dbf"_s)).constData() + 4),
              1u);
    EXPECT_EQ(fileBytes(folder.filePath(u"t.fpt"_s)).size(), 512 + 64) << "the refused memo";

    connection.close();
    EXPECT_EQ(errorNumberOf([&] {
                  appender->append(spanOf({1.0, QVariant()}));
              }),
              ErrorNumber::ObjectClosed);
}

TEST(RowAppender, OtherEnginesInsertRowByRow) {
    QTemporaryDir folder;
    Connection connection;
    connection.open(u"Provider=SQLite;Create If Missing=True;Data Source="_s +
                    folder.filePath(u"t.db"_s));
    connection.execute(u"CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT, born DATETIME)"_s);
    {
        Transaction transaction(connection);
        const std::unique_ptr<RowAppender> appender =
            connection.appendRows(u"t"_s, {u"name"_s, u"born"_s});
        for (int i = 0; i < 3; ++i)
            appender->append(spanOf({u"n%1"_s.arg(i), QDateTime(QDate(2020, 1, 1 + i), {})}));
        EXPECT_EQ(errorNumberOf([&] { appender->append(spanOf({u"x"_s})); }),
                  ErrorNumber::InvalidArgument);
        appender->finish();
        transaction.commit();
    }
    Recordset rows;
    rows.open(u"select name, born from t order by id"_s, connection);
    ASSERT_EQ(rows.recordCount(), 3);
    rows.moveLast();
    EXPECT_EQ(rows.value(0).toString(), u"n2"_s);
    EXPECT_EQ(rows.value(1).toDateTime().date(), QDate(2020, 1, 3));
}

TEST(DbfValues, NumbersAreRightAlignedWithHalvesRoundedAwayFromZero) {
    struct Case {
        QVariant value;
        int length;
        int decimals;
        const char* expected;
    };
    const Case cases[] = {
        {12.5, 6, 0, "    13"},       {2.5, 6, 0, "     3"},
        {-0.5, 6, 0, "    -1"},       {0.125, 6, 2, "  0.13"},
        {-0.125, 6, 2, " -0.13"},     {1.005, 6, 2, "  1.00"}, // just below the half in binary
        {-0.0, 6, 2, "  0.00"},       {7, 8, 4, "  7.0000"},
        {-42, 4, 0, " -42"},          {qint64(9007199254740993), 20, 0, "    9007199254740993"},
        {u"12.25"_s, 6, 1, "  12.3"}, {u"  "_s, 4, 0, "    "},
        {QVariant(), 4, 0, "    "},
    };
    for (const Case& c : cases) {
        const dbf::FieldDescriptor field{u"n"_s, 'N', c.length, c.decimals, 0};
        EXPECT_EQ(fieldText(field, c.value), QByteArray(c.expected))
            << c.value.toString().toStdString();
    }

    const dbf::FieldDescriptor narrow{u"n"_s, 'N', 4, 1, 0};
    EXPECT_EQ(expectError([&] { fieldText(narrow, 123456.0); }, ErrorNumber::ValueDoesNotFit),
              u"Numeric overflow: 123456.0 does not fit field n N(4,1)."_s);
    for (const QVariant& bad : {QVariant(std::nan("")), QVariant(u"abc"_s)})
        EXPECT_EQ(errorNumberOf([&] { fieldText(narrow, bad); }), ErrorNumber::TypeMismatch);
}

TEST(DbfValues, DatesFollowTheCalendarFromYearOneToYear9999) {
    const dbf::FieldDescriptor field{u"d"_s, 'D', 8, 0, 0};
    for (qint64 day = QDate(1, 1, 1).toJulianDay(); day <= QDate(9999, 12, 31).toJulianDay();
         day += 997) {
        const QDate date = QDate::fromJulianDay(day);
        ASSERT_EQ(fieldText(field, date), date.toString(u"yyyyMMdd"_s).toLatin1()) << day;
    }
    for (const QDate date : {QDate(2000, 2, 29), QDate(1900, 3, 1), QDate(2024, 12, 31)})
        EXPECT_EQ(fieldText(field, QDateTime(date, QTime(23, 59))),
                  date.toString(u"yyyyMMdd"_s).toLatin1());
    EXPECT_EQ(fieldText(field, u"2023-05-06"_s), QByteArray("20230506"));
    for (const QDate bad : {QDate(-1, 12, 31), QDate()})
        EXPECT_EQ(errorNumberOf([&] { fieldText(field, bad); }), ErrorNumber::TypeMismatch);
    EXPECT_EQ(errorNumberOf([&] { fieldText(field, QDate(10000, 1, 1)); }),
              ErrorNumber::TypeMismatch);
}

TEST(DbfValues, TextIsCutToTheFieldInTheWindowsCodePage) {
    const dbf::FieldDescriptor field{u"c"_s, 'C', 6, 0, 0};
    EXPECT_EQ(fieldText(field, u"A\u00f1\u20acx\u03a9yz"_s), QByteArray("A\xf1\x80x?y"));
    EXPECT_EQ(fieldText(field, u"ab"_s), QByteArray("ab    "));
    EXPECT_EQ(fieldText(field, 42), QByteArray("42    "));
    EXPECT_EQ(dbf::toCp1252(u"\u0178\u00ff"_s), QByteArray("\x9f\xff"));
}
