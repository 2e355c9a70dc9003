#pragma once

#include <QString>
#include <QVariant>

namespace vx {

class HitListContext;

// The wrap question at the end of a walk; true when the user wants to go on from the start.
bool askStartFromBeginning();

// Find Next: walks the hit list's result set for the searched column's value.
class FindReplaceSearch {
public:
    explicit FindReplaceSearch(HitListContext& hitList);

    // From the row after the current one (or the first row with `fromStart`) to the end, then
    // around again while the user asks to. A match becomes the current row (true); when the user
    // stops, the last row does (false). `findValue` is ValidateValue's answer for `type`.
    bool findNext(const QString& caption, const QString& type, const QVariant& findValue,
                  bool fromStart = false);

private:
    HitListContext& m_hitList;
};

} // namespace vx
