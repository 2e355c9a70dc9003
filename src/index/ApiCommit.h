#pragma once

#include "index/IndexSession.h"

#include <QString>

namespace vx {

// Files the new document through the indexing API: stages every entered value, the excluded
// users and the keywords, lets the API store the document, then records document security.
class ApiCommit {
public:
    explicit ApiCommit(const IndexCommitContext& context);

    // True when the API answered with an item id; that id becomes CurItemID.
    bool run();
    // True when the commit ran to its end (whatever the API answered), not stopped early.
    bool finished() const { return m_finished; }

private:
    void stageFields();
    // False when the user-id collection was cut short by its "empty" marker.
    bool stageExcludedUsers();
    void stageKeywords();
    void recordSecurity();
    // Every user id before the "empty" marker, as text.
    QStringList userIdTexts(bool* stoppedAtMarker = nullptr) const;

    IndexCommitContext m_context;
    QString m_status;
    bool m_finished = false;
};

} // namespace vx
