#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"

#include <QList>
#include <QString>
#include <QtGlobal>

class QWidget;

namespace vx {

class VXDynaForm;

// What the document operations, the find and replace panel and the record form need from the
// hit list that runs them: its session, its current result, the user's identity and rights, the
// selection, and the events it raises to the host. The hit list implements it; tests give a
// light stand-in so an operation can be driven without the whole control.
class HitListContext {
public:
    virtual ~HitListContext() = default;

    // The control itself: owner of dialogs and of the progress form.
    virtual QWidget* controlWidget() = 0;

    // The session's repository connection (opened by Init).
    virtual Connection connection() = 0;
    // The current result; a closed record set before the first query.
    virtual Recordset resultSet() = 0;
    // The last text given to DoQuery.
    virtual QString queryString() const = 0;
    // The group table's name: the caption of the tab keyed "Group".
    virtual QString groupTableName() const = 0;
    virtual qint32 groupId() const = 0;
    virtual QString userName() const = 0;
    virtual qint32 userPermission() const = 0;
    // The group's initialisation file, as given to Init.
    virtual QString initFilePath() const = 0;
    virtual QString serverName() const = 0;
    virtual bool isServer() const = 0;
    virtual qint32 currentItemId() const = 0;
    // The record form (the dynamic form child named "Group").
    virtual VXDynaForm* form() = 0;

    // The selection collection a command works on: the selected rows' item ids in selection
    // order; when nothing is selected, the current row's item id, and the current row becomes
    // selected in the grid.
    virtual QList<qint32> selectionForCommand() = 0;

    // The caption (field name) of the column whose header was clicked last; empty when none.
    virtual QString clickedColumnCaption() const = 0;
    // Moves the result set to `row` and makes it the current row: the grid follows and selects
    // it, and the row-change handling runs once (current item id, CurrentItemID, record form).
    virtual void makeResultRowCurrent(qsizetype row) = 0;
    // Returns once every row of the result is in the result set: a large result is still being
    // read for a while after it is shown.
    virtual void waitForWholeResult() {}
    // Lays the control out again (the find and replace panel was shown or hidden).
    virtual void layoutControl() = 0;
    // Re-runs the result's query keeping the current document current.
    virtual void requeryList() = 0;

    // Events to the host. The locate events clear DocumentToMove first and return the host's
    // answer; an empty answer comes back as "ERROR".
    virtual QString locateDocumentFromID(qint32 itemId, const QString& file,
                                         const QString& volume) = 0;
    virtual QString locateDocumentToMove(qint32 itemId, const QString& file,
                                         const QString& volume) = 0;
    // Raises GetServerName; the host answers by setting ServerName and IsServer.
    virtual void raiseGetServerName() = 0;
    // Raises CurrentItemID with the current item id.
    virtual void raiseCurrentItemID() = 0;
    virtual void raiseRecordAuditTrail(const QString& action, const QList<qint32>& itemIds,
                                       const QString& description) = 0;
};

} // namespace vx
