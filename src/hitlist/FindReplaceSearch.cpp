#include "hitlist/FindReplaceSearch.h"

#include "hitlist/FindReplaceValues.h"
#include "operations/HitListContext.h"
#include "session/UiServices.h"

namespace vx {

bool askStartFromBeginning() {
    return ui().messageBox(QStringLiteral("No more matches found. Start from the begining?"),
                           MessageStyle::YesNo, QStringLiteral("Find")) == MessageAnswer::Yes;
}

FindReplaceSearch::FindReplaceSearch(HitListContext& hitList)
    : m_hitList(hitList) {}

bool FindReplaceSearch::findNext(const QString& caption, const QString& type,
                                 const QVariant& findValue, bool fromStart) {
    Recordset result = m_hitList.resultSet();
    if (!result.isOpen())
        return false;
    const int column = result.field(caption).index();
    const QString wanted = FormatForCompare(type, findValue);

    for (;;) {
        const qsizetype count = result.recordCount();
        qsizetype from = 0;
        if (!fromStart)
            from = result.eof() ? count : result.bof() ? 0 : result.position() + 1;
        // Cells are read in place: moving the cursor row by row would move the grid with it.
        for (qsizetype row = from; row < count; ++row) {
            if (FormatForCompare(type, result.valueAt(row, column)) == wanted) {
                m_hitList.makeResultRowCurrent(row);
                return true;
            }
        }
        if (!askStartFromBeginning()) {
            // Staying on the last row is no move and tells the host nothing.
            if (count > 0 && (result.eof() || result.position() != count - 1))
                m_hitList.makeResultRowCurrent(count - 1);
            return false;
        }
        if (count > 0)
            result.moveFirst();
        fromStart = true;
    }
}

} // namespace vx
