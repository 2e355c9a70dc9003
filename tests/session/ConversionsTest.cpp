#include "session/Conversions.h"

#include "data/Error.h"
#include "session/LocaleScope.h"
#include "support/ErrorNumberOf.h"

#include <QLocale>
#include <climits>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::errorNumberOf;
using vx::test::LocaleScope;

namespace {

const QLocale us(QLocale::English, QLocale::UnitedStates);
const QLocale germany(QLocale::German, QLocale::Germany);
const QLocale britain(QLocale::English, QLocale::UnitedKingdom);

} // namespace

TEST(Conversions, TextToBoolean) {
    LocaleScope scope(us);
    for (const char* yes : {"TRUE", " true ", "-1", "0.5"})
        EXPECT_TRUE(textToBoolean(yes)) << yes;
    for (const char* no : {"False", "0", "0.0"})
        EXPECT_FALSE(textToBoolean(no)) << no;
    for (const char* bad : {"", "yes", "t", "1x"})
        EXPECT_EQ(errorNumberOf([&] { textToBoolean(bad); }), ErrorNumber::TypeMismatch) << bad;
}

TEST(Conversions, ToInt32RoundsHalvesToEvenAndChecksRange) {
    LocaleScope scope(us);
    const std::pair<double, qint32> numbers[] = {
        {2.5, 2}, {3.5, 4}, {-2.5, -2}, {-3.5, -4}, {2.5000001, 3}};
    for (const auto& [number, expected] : numbers)
        EXPECT_EQ(toInt32(number), expected) << number;
    const std::pair<const char*, qint32> texts[] = {
        {"0.5", 0}, {" 1.5 ", 2}, {"1e3", 1000}, {"&H10", 16}};
    for (const auto& [text, expected] : texts)
        EXPECT_EQ(toInt32(QString(text)), expected) << text;
    EXPECT_EQ(toInt32(2147483647.4), INT_MAX);
    EXPECT_EQ(toInt32(-2147483648.0), INT_MIN);
    EXPECT_EQ(toInt32(true), -1);
    EXPECT_EQ(toInt32(qint64(-5)), -5);
    for (const QVariant& big : {QVariant(2147483647.5), QVariant(-2147483649.0),
                                QVariant(qint64(1) << 40), QVariant(QString("3000000000"))})
        EXPECT_EQ(errorNumberOf([&] { toInt32(big); }), ErrorNumber::Overflow)
            << big.toString().toStdString();
    for (const QVariant& bad : {QVariant(QString("")), QVariant(QString("12abc")),
                                QVariant(QString("nan")), QVariant(QString("inf"))})
        EXPECT_EQ(errorNumberOf([&] { toInt32(bad); }), ErrorNumber::TypeMismatch)
            << bad.toString().toStdString();
    EXPECT_NE(errorNumberOf([] { toInt32(QVariant()); }), 0) << "a null has no number";

    EXPECT_EQ(toInt16(32767.4), 32767);
    EXPECT_EQ(toInt16(QString("-32768")), -32768);
    EXPECT_EQ(errorNumberOf([] { toInt16(32767.5); }), ErrorNumber::Overflow);
}

TEST(Conversions, NumbersReadByTheUsersLocale) {
    LocaleScope scope(germany);
    EXPECT_EQ(toInt32(QString("2,5")), 2);
    EXPECT_EQ(toInt32(QString("3,5")), 4);
    EXPECT_DOUBLE_EQ(toDouble(QString("1.5")), 1.5) << "the C form still reads";
}

TEST(Conversions, TextToDateUsesTheShortDateFormat) {
    {
        LocaleScope scope(us);
        const QDate ides(2024, 3, 15);
        const std::pair<const char*, QDateTime> cases[] = {
            {"3/15/2024", {ides, {0, 0}}},         {"03/05/2024", {{2024, 3, 5}, {0, 0}}},
            {"3/15/24", {ides, {0, 0}}},           {"3/15/45", {{1945, 3, 15}, {0, 0}}},
            {"3/15/2024 14:30", {ides, {14, 30}}}, {"3/15/2024 2:30:05 PM", {ides, {14, 30, 5}}},
            {"2024-03-15", {ides, {0, 0}}},        {"2024-03-15 08:09:10", {ides, {8, 9, 10}}},
            {"14:30", {{1899, 12, 30}, {14, 30}}}};
        for (const auto& [text, expected] : cases)
            EXPECT_EQ(textToDate(text), expected) << text;
        for (const char* bad : {"", "15/15/2024", "2/30/2024", "soon"})
            EXPECT_EQ(errorNumberOf([&] { textToDate(bad); }), ErrorNumber::TypeMismatch) << bad;
    }
    LocaleScope scope(britain);
    EXPECT_EQ(textToDate("05/03/2024").date(), QDate(2024, 3, 5));
    EXPECT_EQ(textToDate("15/03/2024").date(), QDate(2024, 3, 15));
}

TEST(Conversions, NumberToTextHasTheLeadingBlank) {
    for (const auto& [number, text] :
         {std::pair<qint64, const char*>{42, " 42"}, {0, " 0"}, {-7, "-7"}})
        EXPECT_EQ(numberToText(number), text);
    const std::pair<double, const char*> doubles[] = {
        {2.5, " 2.5"},   {-0.25, "-.25"},  {0.5, " .5"},      {-0.0, " 0"},
        {100.0, " 100"}, {1e20, " 1E+20"}, {0.1 + 0.2, " .3"}}; // fifteen significant digits
    for (const auto& [number, text] : doubles)
        EXPECT_EQ(numberToText(number), text) << number;
}

TEST(Conversions, FormatDateTimePatterns) {
    LocaleScope scope(us);
    const QDateTime moment(QDate(2016, 11, 7), QTime(20, 45, 12));
    EXPECT_EQ(formatDateTime(moment, "mm/dd/yyyy"), "11/07/2016");
    EXPECT_EQ(formatDateTime(moment, "dd/mm/yyyy"), "07/11/2016");
    EXPECT_EQ(formatDateTime(moment, "ddmmyy"), "071116");
    EXPECT_EQ(formatDateTime(moment, "hhmmss"), "204512") << "m after h is minutes";
    EXPECT_EQ(formatDateTime(moment, "yyyy-mm-dd hh:nn:ss"), "2016-11-07 20:45:12");
    EXPECT_EQ(formatDateTime(moment, "h:mm AM/PM"), "8:45 PM");
    EXPECT_EQ(formatDateTime(moment, "d mmm yyyy"), "7 Nov 2016");
    EXPECT_EQ(formatDateTime(moment, "\"day\" d"), "day 7");
    EXPECT_EQ(formatDateTime(moment, "Short Date"), "11/7/2016");
    EXPECT_EQ(formatDateTime(QDateTime(), "mm/dd/yyyy"), "");
    LocaleScope german(germany);
    EXPECT_EQ(formatDateTime(moment, "Short Date"), "07.11.2016");
}

TEST(Conversions, FormatNumberPatterns) {
    LocaleScope scope(us);
    // Displayed halves round away from zero.
    const std::pair<double, const char*> padded[] = {
        {0, "0000"}, {7, "0007"}, {12345, "12345"}, {2.5, "0003"}};
    for (const auto& [number, text] : padded)
        EXPECT_EQ(formatNumber(number, "0000"), text) << number;
    const std::pair<double, const char*> decimals[] = {
        {2.5, "2.5"},    {3, "3"},      {2.675, "2.68"}, {0.004, "0"},
        {0.125, "0.13"}, {9.999, "10"}, {-1.5, "-1.5"}};
    for (const auto& [number, text] : decimals)
        EXPECT_EQ(formatNumber(number, "#########.##"), text) << number;
    EXPECT_EQ(formatNumber(1234567.891, "#,##0.00"), "1,234,567.89");
    LocaleScope german(germany);
    EXPECT_EQ(formatNumber(2.5, "#########.##"), "2,5");
}
