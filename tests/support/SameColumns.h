#pragma once

#include "data/Recordset.h"

#include <gtest/gtest.h>

namespace vx::test {

// A record set opened another way (streamed, for appending) describes its columns as a full
// read of the same source does.
inline void expectSameColumns(const Recordset& other, const Recordset& full,
                              bool baseNames = true) {
    ASSERT_EQ(other.fieldCount(), full.fieldCount());
    for (int i = 0; i < full.fieldCount(); ++i) {
        const ColumnInfo& a = other.columnInfo(i);
        const ColumnInfo& b = full.columnInfo(i);
        SCOPED_TRACE(b.name.toStdString());
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.type, b.type);
        EXPECT_EQ(a.definedSize, b.definedSize);
        EXPECT_EQ(a.keyColumn, b.keyColumn);
        if (baseNames) {
            EXPECT_EQ(a.baseTable, b.baseTable);
            EXPECT_EQ(a.baseColumn, b.baseColumn);
        }
    }
}

} // namespace vx::test
