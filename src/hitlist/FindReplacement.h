#pragma once

#include <QString>
#include <QVariant>
#include <functional>

namespace vx {

class HitListContext;
class Recordset;

// Replace and Replace All: changes the searched column in the group's table, one confirmed
// document at a time or in every matching document of the current query at once.
class FindReplacement {
public:
    // What the user asked for: the column, the texts as typed and as ValidateValue took them.
    struct Request {
        QString caption;
        QString type;
        QString findText;
        QVariant findValue;
        QString replaceText;
        QVariant replaceValue;
    };

    explicit FindReplacement(HitListContext& hitList);

    // Walks the group table for the first match that is also in the current result and asks
    // before keeping the change; a declined change is rolled back and the walk goes on. True
    // when a replacement was kept.
    bool replaceOne(const Request& request);

    // One UPDATE over the matching documents of the current query after the user agreed.
    // `afterCommit` runs before the count is reported. The list is requeried in every case.
    // Returns the number of documents changed.
    qint64 replaceAll(const Request& request, const std::function<void()>& afterCommit);

private:
    qint64 runReplaceAll(const Request& request, const std::function<void()>& afterCommit);
    // The result's row holding the document; -1 when it is not there.
    static qsizetype rowOfItem(const Recordset& result, qint32 itemId);

    HitListContext& m_hitList;
};

} // namespace vx
