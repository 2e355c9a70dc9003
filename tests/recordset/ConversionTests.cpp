#include "FakeDriver.h"
#include "data/Field.h"
#include "session/LocaleScope.h"

#include <QLocale>
#include <cmath>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::column;
using vx::test::LocaleScope;

namespace {

qint32 errorOf(const QVariant& value, const ColumnInfo& info) {
    return test::errorOf([&] { convertForColumn(value, info); });
}

} // namespace

TEST(Conversion, IntegersRoundHalfToEvenAndKeepTheirRange) {
    const ColumnInfo integer = column("n", DataType::Integer);
    const std::pair<QVariant, int> integers[] = {
        {2.5, 2},     {3.5, 4},     {-2.5, -2}, {2.6, 3},
        {" 2.5 ", 2}, {"-17", -17}, {true, -1}, {"2147483647", 2147483647}};
    for (const auto& [value, expected] : integers)
        EXPECT_EQ(convertForColumn(value, integer), QVariant(expected))
            << value.toString().toStdString();
    EXPECT_EQ(errorOf("2147483648", integer), ErrorNumber::Overflow);
    EXPECT_EQ(errorOf(2147483647.5, integer), ErrorNumber::Overflow); // rounds up to 2^31
    EXPECT_EQ(errorOf("abc", integer), ErrorNumber::TypeMismatch);

    const ColumnInfo small = column("s", DataType::SmallInt);
    EXPECT_EQ(convertForColumn(-32768, small), QVariant(-32768));
    EXPECT_EQ(errorOf(32768, small), ErrorNumber::Overflow);
    EXPECT_EQ(errorOf("-32769", small), ErrorNumber::Overflow);
    EXPECT_EQ(convertForColumn(32767.4, small), QVariant(32767));

    const ColumnInfo big = column("b", DataType::BigInt);
    EXPECT_EQ(convertForColumn("9007199254740993", big),
              QVariant(qint64(9007199254740993LL))); // exact, not through a double
    EXPECT_EQ(errorOf(1e19, big), ErrorNumber::Overflow);
    EXPECT_EQ(test::errorTextOf([&] { convertForColumn(70000, small); }), "Overflow");
}

TEST(Conversion, BooleansFromTextAndNumbers) {
    const ColumnInfo flag = column("f", DataType::Boolean);
    const std::pair<QVariant, bool> booleans[] = {{"TRUE", true}, {"false", false}, {"-1", true},
                                                  {"0", false},   {7, true},        {0.0, false}};
    for (const auto& [value, expected] : booleans)
        EXPECT_EQ(convertForColumn(value, flag), QVariant(expected))
            << value.toString().toStdString();
    EXPECT_EQ(errorOf("yes", flag), ErrorNumber::TypeMismatch);

    // A Boolean reads back as a Boolean and is kept as -1 / 0.
    auto store = test::makeStore({flag}, {{true}, {false}});
    EXPECT_EQ(store->value(0, 0), QVariant(true));
    EXPECT_EQ(store->integerAt(0, 0), -1);
    EXPECT_EQ(store->integerAt(1, 0), 0);
}

TEST(Conversion, TextKeepsToTheDefinedSize) {
    const ColumnInfo varchar = column("v", DataType::VarWChar, "t", false, 5);
    EXPECT_EQ(convertForColumn("abcde", varchar), QVariant("abcde"));
    EXPECT_EQ(errorOf("abcdef", varchar), ErrorNumber::ValueDoesNotFit);
    EXPECT_EQ(errorOf("abcdef", column("c", DataType::WChar, "t", false, 5)),
              ErrorNumber::ValueDoesNotFit);
    // Long text has no limit; numbers become their text.
    EXPECT_EQ(convertForColumn(QString(70000, 'x'), column("m", DataType::LongVarWChar))
                  .toString()
                  .size(),
              70000);
    EXPECT_EQ(convertForColumn(42, varchar), QVariant("42"));
    EXPECT_TRUE(convertForColumn(QString(), varchar).isValid()); // empty text stays text
    EXPECT_EQ(test::errorTextOf([&] { convertForColumn("toolong", varchar); }),
              "Multiple-step operation generated errors. Check each status value.");
}

TEST(Conversion, NullAndBlankBecomeNullOtherTextIsChecked) {
    for (const DataType type : {DataType::Integer, DataType::Double, DataType::Date,
                                DataType::Boolean, DataType::VarWChar}) {
        EXPECT_FALSE(convertForColumn(QVariant(), column("x", type)).isValid());
    }
    EXPECT_FALSE(convertForColumn("  ", column("n", DataType::Integer)).isValid());
    EXPECT_FALSE(convertForColumn(QString(), column("d", DataType::Date)).isValid());
    EXPECT_EQ(errorOf("1.2.3", column("r", DataType::Double)), ErrorNumber::TypeMismatch);
    EXPECT_EQ(errorOf(1e300, column("s", DataType::Single)), ErrorNumber::Overflow);
}

TEST(Conversion, DatesFromIsoAndLocaleText) {
    const ColumnInfo date = column("d", DataType::Date);
    const QDateTime expected(QDate(2024, 3, 15), QTime(10, 30, 5));
    EXPECT_EQ(convertForColumn("2024-03-15 10:30:05", date).toDateTime(), expected);
    EXPECT_EQ(convertForColumn("2024-03-15T10:30:05", date).toDateTime(), expected);
    EXPECT_EQ(convertForColumn(QDate(2024, 3, 15), date).toDateTime(),
              QDateTime(QDate(2024, 3, 15), QTime(0, 0)));
    EXPECT_EQ(errorOf("31/31/2024", date), ErrorNumber::TypeMismatch);
    EXPECT_EQ(errorOf("tomorrow", date), ErrorNumber::TypeMismatch);

    {
        LocaleScope us(QLocale(QLocale::English, QLocale::UnitedStates));
        EXPECT_EQ(convertForColumn("3/15/2024", date).toDateTime().date(), QDate(2024, 3, 15));
        EXPECT_EQ(convertForColumn("03/04/24", date).toDateTime().date(),
                  QDate(2024, 3, 4)); // month first; two-digit year in this century
        EXPECT_EQ(convertForColumn("3/4/85", date).toDateTime().date(), QDate(1985, 3, 4));
        EXPECT_EQ(convertForColumn("3/15/2024 14:05:09", date).toDateTime(),
                  QDateTime(QDate(2024, 3, 15), QTime(14, 5, 9)));
    }
    {
        LocaleScope uk(QLocale(QLocale::English, QLocale::UnitedKingdom));
        EXPECT_EQ(convertForColumn("03/04/2024", date).toDateTime().date(),
                  QDate(2024, 4, 3)); // day first
        EXPECT_EQ(errorOf("3/15/2024", date), ErrorNumber::TypeMismatch);
    }
    {
        LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
        EXPECT_EQ(convertForColumn("15.03.2024", date).toDateTime().date(), QDate(2024, 3, 15));
        EXPECT_EQ(convertForColumn("2,5", column("n", DataType::Integer)),
                  QVariant(2)); // the locale's decimal comma, then half to even
    }
}

TEST(Conversion, DatesOutsideTheCalendarOverflowBeforeAnyArithmetic) {
    const ColumnInfo date = column("d", DataType::Date);
    const ColumnInfo number = column("n", DataType::Double);
    const struct {
        QVariant value;
        const ColumnInfo& into;
        qint32 error;
        const char* date; // when it converts
    } cases[] = {
        {1e300, date, ErrorNumber::Overflow, ""},
        {-9.2e18, date, ErrorNumber::Overflow, ""},
        {std::nan(""), date, ErrorNumber::Overflow, ""},
        {2958466.0, date, ErrorNumber::Overflow, ""},
        {-657435.0, date, ErrorNumber::Overflow, ""},
        {2958465.5, date, 0, "9999-12-31 12:00:00"},
        {-657434.0, date, 0, "0100-01-01 00:00:00"},
        {QDate(10000, 1, 1), date, ErrorNumber::Overflow, ""},
        {QDate(99, 12, 31), number, ErrorNumber::Overflow, ""},
        {QDate::fromJulianDay(784354017364), number, ErrorNumber::Overflow, ""},
        {"0050-06-01", date, ErrorNumber::Overflow, ""},
        {QDateTime(), date, ErrorNumber::TypeMismatch, ""},
        {QDate(2024, 2, 29), date, 0, "2024-02-29 00:00:00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value.toString().toStdString());
        EXPECT_EQ(errorOf(c.value, c.into), c.error);
        if (c.error == 0) {
            EXPECT_EQ(
                convertForColumn(c.value, c.into).toDateTime().toString("yyyy-MM-dd HH:mm:ss"),
                QString::fromLatin1(c.date));
        }
    }
}
