#pragma once

#include <QVariant>
#include <vector>

namespace vx {

class RowStore;

// Finds the first position at or after `from` whose cell in `column` equals `value`, scanning
// the stored values directly (text as UTF-8, no string per row). A value that cannot be held by
// the column matches nothing. Returns -1 when nothing matches.
qsizetype findValue(const RowStore& store, const std::vector<qsizetype>& order, int column,
                    const QVariant& value, qsizetype from, Qt::CaseSensitivity textCase);

} // namespace vx
