#pragma once

#include "GroupSession.h"
#include "SearchPane.h"

namespace vx::demo {

using apps::HitListEvents;

// The demo's search page: the search pane over the group the user opened.
class SearchPage : public apps::SearchPane {
    Q_OBJECT

public:
    explicit SearchPage(QWidget* parent = nullptr);
    ~SearchPage() override;

    void openSession(const GroupSession& session);
    void closeSession();

    // Applies a query hand-over file another program left, if any (the search then runs).
    void applyHandOver();

private:
    bool m_sessionOpen = false;
};

} // namespace vx::demo
