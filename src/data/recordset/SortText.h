#pragma once

#include "data/ColumnInfo.h"

#include <QString>
#include <VXUILib/vxdata_export.h>
#include <functional>
#include <vector>

namespace vx {

struct SortColumn {
    int column = 0;
    bool descending = false;
};

// Parses a sort text such as "[Item ID] ASC, name DESC": brackets optional, direction optional
// (ascending). `columnIndex` resolves a name to a column or -1; an unknown name throws
// ItemNotFound. An empty or blank text gives no columns.
VXDATA_EXPORT std::vector<SortColumn>
parseSortText(const QString& text, const std::function<int(const QString&)>& columnIndex);

} // namespace vx
