#pragma once

#include "data/dbf/DbfLayout.h"

#include <QString>

namespace vx::dbf {

// "CREATE TABLE name(col TYPE, ...);" as the export writes it. Types: NUMERIC [(w[,d])],
// CHAR(n) (n up to 254), DATE, MEMO, BOOL (also LOGICAL and the one-letter N, C, D, M, L).
// A NUMERIC without width is N(20,4): room for 32-bit ids and amounts to four decimals.
struct CreateTableStatement {
    QString table;
    TableLayout layout;

    static bool looksLikeOne(const QString& sql);
    // Throws vx::Error (syntax error) naming what is wrong.
    static CreateTableStatement parse(const QString& sql);
};

inline constexpr int DefaultNumericWidth = 20;
inline constexpr int DefaultNumericDecimals = 4;
inline constexpr int MaxFieldNameLength = 10;

} // namespace vx::dbf
