#include "hitlist/HitListSession.h"

#include "data/Error.h"
#include "data/model/RecordsetModel.h"
#include "hitlist/FindReplacePanel.h"
#include "hitlist/HitListCommands.h"
#include "hitlist/HitListLoader.h"
#include "hitlist/HitListToolbar.h"
#include "hitlist/RecordForm.h"
#include "hitlist/ResultsGrid.h"
#include "hitlist/VXHitList.h"
#include "session/KeyedTabStrip.h"

namespace vx {

namespace {
const QString ItemIdField = QStringLiteral("itemid");
const QString KTRevSuffix = QStringLiteral("KTRev");
} // namespace

HitListSession::HitListSession(HitListParts& hitListParts)
    : parts(hitListParts) {}

HitListSession::~HitListSession() = default;

QString HitListSession::settingsSection() const {
    return parts.tabStrip->caption(QStringLiteral("Group"));
}

bool HitListSession::versionsShown() const {
    return parts.toolbar->isPressed(QStringLiteral("Archive"));
}

qint32 HitListSession::resultRowItemId() const {
    if (!result.isOpen() || result.eof() || result.bof())
        return 0;
    return result.value(ItemIdField).toInt();
}

QList<qint32> HitListSession::selectedItems() {
    QList<qint32> ids;
    // The grid's bookmarks address the result set only while it shows the results.
    if (!result.isOpen() || !parts.grid->boundRecordset().isOpen() || versionsShown())
        return ids;
    FlagScope walk(selectionWalk);
    // Ends before the walk flag: the grid's one catch-up move is still part of the walk.
    ResultsGrid::FollowPause pause(*parts.grid);
    for (const Bookmark bookmark : parts.grid->selectedBookmarks()) {
        try {
            result.setBookmark(bookmark);
            ids << result.value(ItemIdField).toInt();
        } catch (const Error&) {
        }
    }
    return ids;
}

void HitListSession::selectCurrentRow() {
    if (!versionsShown() && result.isOpen() && !result.eof() && !result.bof())
        parts.grid->selectRow(int(result.position()));
}

void HitListSession::rowColChange() {
    if (rowChangeGuard)
        return;
    if (!versionsShown()) {
        currentRowChanged();
        return;
    }
    if (!versionsReady)
        return;
    try {
        if (versions.eof())
            versions.movePrevious();
        else if (versions.bof())
            versions.moveNext();
        raiseLocateRevisionDoc();
    } catch (const Error&) {
    }
}

void HitListSession::currentRowChanged() {
    if (selectionWalk)
        return;
    FlagScope guard(rowChangeGuard);
    try {
        if (requeryPending && result.isOpen() && !result.eof()) {
            const int column = result.fieldIndex(ItemIdField);
            const qsizetype from = qMax<qsizetype>(0, result.position());
            const qsizetype found = result.find(column, rememberedItemId, from);
            if (found >= 0) {
                result.setPosition(found);
            } else {
                result.moveLast();
                result.moveNext();
            }
        }
        if (!result.isOpen() || result.eof() || result.bof())
            return;
        itemId = result.value(ItemIdField).toInt();
        raiseCurrentItemID();
    } catch (const Error&) {
        return;
    }
    updateForm();
}

void HitListSession::bindGrid(const Recordset& recordset, bool selectCurrent) {
    FlagScope guard(rowChangeGuard);
    parts.grid->bind(recordset);
    parts.grid->clearSelection();
    parts.grid->followRecordset(selectCurrent);
}

void HitListSession::applyColumnLayout() {
    parts.grid->applyColumnWidths(settingsSection(), versionsShown() ? KTRevSuffix : QString());
    parts.grid->applyColumnFormats();
}

void HitListSession::updateForm() {
    if (!parts.recordForm)
        return;
    try {
        parts.recordForm->UpdateForm();
    } catch (const Error&) {
    } catch (const std::exception&) {
    }
}

void HitListSession::raiseLocateRevisionDoc() {
    QString file = versions.value(QStringLiteral("File Name")).toString();
    QString volume = versions.value(QStringLiteral("Volume Name")).toString();
    QString version = versions.value(QStringLiteral("Version")).toString();
    QString item = versions.value(QStringLiteral("Item ID")).toString();
    emit parts.control->LocateRevisionDoc(file, volume, version, item);
}

QWidget* HitListSession::controlWidget() {
    return parts.control;
}

Connection HitListSession::connection() {
    return session;
}

Recordset HitListSession::resultSet() {
    return result;
}

QString HitListSession::queryString() const {
    return query;
}

QString HitListSession::groupTableName() const {
    return settingsSection();
}

qint32 HitListSession::groupId() const {
    return groupIdValue;
}

QString HitListSession::userName() const {
    return userNameValue;
}

qint32 HitListSession::userPermission() const {
    return permission;
}

QString HitListSession::initFilePath() const {
    return initFile;
}

QString HitListSession::serverName() const {
    return serverNameValue;
}

bool HitListSession::isServer() const {
    return isServerValue;
}

qint32 HitListSession::currentItemId() const {
    return itemId;
}

VXDynaForm* HitListSession::form() {
    return parts.form;
}

QList<qint32> HitListSession::selectionForCommand() {
    waitForWholeResult();
    QList<qint32> ids = selectedItems();
    if (ids.isEmpty()) {
        const qint32 current = resultRowItemId();
        if (current != 0) {
            ids << current;
            selectCurrentRow();
        }
    }
    return ids;
}

QString HitListSession::clickedColumnCaption() const {
    const Recordset shown = parts.grid->boundRecordset();
    if (clickedColumn < 0 || clickedColumn >= shown.fieldCount())
        return {};
    return shown.columnInfo(clickedColumn).name;
}

void HitListSession::makeResultRowCurrent(qsizetype row) {
    {
        // The grid's own row change would report the move a second time.
        FlagScope guard(rowChangeGuard);
        result.setPosition(row);
        parts.grid->followRecordset(true);
    }
    currentRowChanged();
}

void HitListSession::waitForWholeResult() {
    if (parts.loader)
        parts.loader->finish();
}

void HitListSession::cancelLoad() {
    if (parts.loader)
        parts.loader->cancel();
}

void HitListSession::layoutControl() {
    parts.control->layoutControl();
}

void HitListSession::requeryList() {
    if (!result.isOpen())
        return;
    // Everything is read again: rows still coming would belong to the old reading.
    cancelLoad();
    rememberedItemId = itemId;
    {
        FlagScope pending(requeryPending);
        {
            FlagScope guard(rowChangeGuard);
            result.requery();
        }
        if (!versionsShown()) {
            bindGrid(result, false);
            currentRowChanged();
            FlagScope guard(rowChangeGuard);
            parts.grid->followRecordset(true);
        }
    }
    parts.grid->viewport()->update();
    if (result.eof()) {
        itemId = rememberedItemId;
        parts.commands->showResultsView();
        currentValid = true;
        raiseCurrentItemID();
    } else {
        applyColumnLayout();
    }
}

QString HitListSession::locateDocumentFromID(qint32 id, const QString& file,
                                             const QString& volume) {
    documentToMove.clear();
    qint32 itemArgument = id;
    QString fileArgument = file;
    QString volumeArgument = volume;
    emit parts.control->LocateDocumentFromID(itemArgument, fileArgument, volumeArgument);
    return documentToMove.isEmpty() ? QStringLiteral("ERROR") : documentToMove;
}

QString HitListSession::locateDocumentToMove(qint32 id, const QString& file,
                                             const QString& volume) {
    documentToMove.clear();
    qint32 itemArgument = id;
    QString fileArgument = file;
    QString volumeArgument = volume;
    emit parts.control->LocateDocumentToMove(itemArgument, fileArgument, volumeArgument);
    return documentToMove.isEmpty() ? QStringLiteral("ERROR") : documentToMove;
}

void HitListSession::raiseGetServerName() {
    emit parts.control->GetServerName();
}

void HitListSession::raiseCurrentItemID() {
    qint32 argument = itemId;
    emit parts.control->CurrentItemID(argument);
}

void HitListSession::raiseRecordAuditTrail(const QString& action, const QList<qint32>& itemIds,
                                           const QString& description) {
    QString actionArgument = action;
    QVariantList ids;
    for (const qint32 id : itemIds)
        ids << id;
    QString descriptionArgument = description;
    emit parts.control->RecordAuditTrail(actionArgument, ids, descriptionArgument);
}

} // namespace vx
