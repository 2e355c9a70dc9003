#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"
#include "operations/HitListContext.h"
#include "session/companions/VXDynaForm.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <memory>

class QMenu;
class QTableView;
class QWidget;

namespace vx {

class FindReplacePanel;
class HitListCommands;
class HitListLoader;
class KeyedTabStrip;
class HitListToolbar;
class RecordForm;
class ResultsGrid;
class VXHitList;

// The parts of the control, made by VXHitList and shared by its collaborators.
struct HitListParts {
    VXHitList* control = nullptr;
    ResultsGrid* grid = nullptr;
    QTableView* oldGrid = nullptr;
    HitListToolbar* toolbar = nullptr;
    KeyedTabStrip* tabStrip = nullptr;
    QMenu* optionMenu = nullptr;
    FindReplacePanel* findReplace = nullptr;
    QPointer<VXDynaForm> form;
    QPointer<QWidget> keywords; // "kss3"
    QPointer<QWidget> users;    // "dcs"
    std::unique_ptr<RecordForm> recordForm;
    HitListCommands* commands = nullptr;
    HitListLoader* loader = nullptr;
};

// The hit list's state and its side of the contract with its collaborators: identity, session,
// result and versions sets, the current row and the flags that hold off re-entrant row changes,
// the selection, and the events raised to the host.
class HitListSession : public HitListContext {
public:
    explicit HitListSession(HitListParts& parts);
    ~HitListSession() override;

    HitListParts& parts;

    // Identity given by the host.
    QString groupName;
    qint32 groupIdValue = 0;
    QString userNameValue;
    qint32 permission = 0;
    QString documentToMove;
    QString serverNameValue;
    bool isServerValue = false;
    QString initFile;

    Connection session;
    Recordset result;
    Recordset versions;
    QString query;
    bool sessionOpen = false;
    // Init could not open the repository and said so; what needs it then ends quietly.
    bool openFailed = false;

    qint32 itemId = 0;          // the current item id
    bool currentValid = false;  // a row has been made current
    bool selectionWalk = false; // code is moving the result set over the selection
    bool rowChangeGuard = false;
    bool versionsReady = false;
    bool requeryPending = false;
    qint32 rememberedItemId = 0;
    int clickedColumn = -1;
    // The selection the running command works on.
    QList<qint32> selection;

    // The caption of the tab keyed "Group": the settings section and the group table's name.
    QString settingsSection() const;
    bool versionsShown() const;
    // Item id of the result set's current row; 0 when it has none.
    qint32 resultRowItemId() const;

    // The selected rows' item ids in selection order; the result set ends on the last of them.
    QList<qint32> selectedItems();
    // Selects the result set's current row in the grid.
    void selectCurrentRow();

    // Grid row changes (RowColChange) and the current-row handling behind them.
    void rowColChange();
    void currentRowChanged();
    // Binds a record set to the grid and puts the grid on its current row without running the
    // row-change handling.
    void bindGrid(const Recordset& recordset, bool selectCurrent);
    void applyColumnLayout();
    void updateForm();
    void raiseLocateRevisionDoc();

    // HitListContext.
    QWidget* controlWidget() override;
    Connection connection() override;
    Recordset resultSet() override;
    QString queryString() const override;
    QString groupTableName() const override;
    qint32 groupId() const override;
    QString userName() const override;
    qint32 userPermission() const override;
    QString initFilePath() const override;
    QString serverName() const override;
    bool isServer() const override;
    qint32 currentItemId() const override;
    VXDynaForm* form() override;
    QList<qint32> selectionForCommand() override;
    QString clickedColumnCaption() const override;
    void makeResultRowCurrent(qsizetype row) override;
    void waitForWholeResult() override;
    // Stops reading the rest of the result (a new result, or the list closes).
    void cancelLoad();
    void layoutControl() override;
    void requeryList() override;
    QString locateDocumentFromID(qint32 itemId, const QString& file,
                                 const QString& volume) override;
    QString locateDocumentToMove(qint32 itemId, const QString& file,
                                 const QString& volume) override;
    void raiseGetServerName() override;
    void raiseCurrentItemID() override;
    void raiseRecordAuditTrail(const QString& action, const QList<qint32>& itemIds,
                               const QString& description) override;
};

// Sets a flag for its lifetime, restoring the previous value on every way out.
class FlagScope {
public:
    explicit FlagScope(bool& flag)
        : m_flag(flag)
        , m_previous(flag) {
        flag = true;
    }
    ~FlagScope() { m_flag = m_previous; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    bool& m_flag;
    bool m_previous;
};

} // namespace vx
