#include "data/sqlite/SqliteParameters.h"

#include <QDateTime>
#include <gtest/gtest.h>

using vx::sqlite::SqliteParameters;

TEST(SqliteDateText, DatesAreStoredAsTextDigitByDigit) {
    const std::pair<QVariant, const char*> cases[] = {
        {QDate(2024, 2, 29), "2024-02-29 00:00:00"},
        {QTime(7, 5, 9), "1899-12-30 07:05:09"},
        {QDateTime(QDate(1, 1, 1), QTime(23, 59, 59, 999)), "0001-01-01 23:59:59"},
        {QDateTime(QDate(9999, 12, 31), QTime(0, 0)), "9999-12-31 00:00:00"},
        {QDateTime(QDate(10000, 1, 2), QTime(3, 4, 5)), "10000-01-02 03:04:05"},
        {QDate(), ""},
        {QDateTime(), ""},
    };
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(SqliteParameters::dateText(value), QByteArray(expected))
            << value.toString().toStdString();
}
