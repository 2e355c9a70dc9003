#pragma once

#include "data/Connection.h"
#include "session/companions/VXItemList.h"
#include "session/companions/VXScanIndex.h"
#include "session/companions/VXSecurity.h"

#include <QString>
#include <QVariantList>
#include <memory>

class QObject;
class QWidget;

namespace vx {

class VXDynaForm;

// What the host told the index control about the user, the group and the current document.
struct IndexIdentity {
    QString groupName;
    qint32 groupId = 0;
    QString userName;
    qint32 curItemId = 0;
    qint32 curFileType = 0;
    qint32 userPermission = 0;
    QString currentLibrary;
    QString documentPath;
    QString getItemId;
    QVariantList userIds;
    bool remoteIndex = false;
};

// The index control's own session: its connection and companion objects, alive between Init and
// Done. The indexing API object outlives Done until the next Init replaces it.
struct IndexSession {
    Connection connection;
    std::unique_ptr<VXScanIndex> api;
    std::shared_ptr<VXItemList> apiList;
    std::shared_ptr<VXItemList> apiListKey;
    std::unique_ptr<VXSecurity> security;
    QString initPath;
    bool initialised = false;
};

// Everything a commit reads: the session, the host's values, the form, the keyword picker and
// the group table's name (the first tab's caption).
struct IndexCommitContext {
    IndexSession& session;
    IndexIdentity& identity;
    VXDynaForm& form;
    QObject* keywords;
    QWidget* owner;
    QString groupTable;
};

// The marker item of a user-id collection the host never filled; readers stop at it.
inline const QString UnsetUserIdsMarker = QStringLiteral("empty");

} // namespace vx
