#include "SearchPage.h"

#include "data/Error.h"
#include "server/LateBinding.h"

#include <QSplitter>

namespace vx::demo {

SearchPage::SearchPage(QWidget* parent)
    : SearchPane(parent) {
    setObjectName(QStringLiteral("searchPage"));
    splitter()->setObjectName(QStringLiteral("searchSplitter"));
}

SearchPage::~SearchPage() {
    closeSession();
}

void SearchPage::openSession(const GroupSession& session) {
    closeSession();
    QWidget* hitList = hitListControl();
    writeMember(hitList, "GroupName", session.groupName);
    writeMember(hitList, "GroupID", session.groupId);
    writeMember(hitList, "UserName", session.userName);
    writeMember(hitList, "UserPermission", session.userPermission);
    writeMember(hitList, "GroupInitString", session.formPath);
    writeMember(hitList, "Init", session.initFilePath);

    QWidget* query = queryControl();
    writeMember(query, "GroupName", session.groupName);
    writeMember(query, "CurrentLibrary", session.libraryName);
    writeMember(query, "UserID", session.userId);
    writeMember(query, "MethodInitString", session.initFilePath);
    try {
        apps::callWithTexts(query, "Init", session.queryFormPath);
        apps::callWithTexts(favouritesControl(), "Init", session.groupName);
    } catch (const Error& error) {
        emit statusMessage(error.description());
    }
    fitQueryForm();
    m_sessionOpen = true;
}

void SearchPage::closeSession() {
    if (!m_sessionOpen)
        return;
    m_sessionOpen = false;
    doneControls();
}

void SearchPage::applyHandOver() {
    if (!m_sessionOpen)
        return;
    try {
        callMember(queryControl(), "RefreshFormContent");
    } catch (const Error& error) {
        emit statusMessage(error.description());
    }
}

} // namespace vx::demo
