#include "data/ResultStream.h"

namespace vx {

bool ResultStream::orderBy(const std::vector<SortColumn>&) {
    return false;
}

std::unique_ptr<RowStore> ResultStream::read(qsizetype maxRows) {
    auto rows = std::make_unique<RowStore>(columns());
    fetch(*rows, maxRows);
    return rows;
}

std::unique_ptr<RowStore> emptyLike(const RowStore& rows) {
    return std::make_unique<RowStore>(rows.columns());
}

} // namespace vx
