#include "support/FakeHitListContext.h"

#include "session/FormDefinition.h"
#include "session/GroupConnection.h"
#include "session/LibraryState.h"
#include "session/companions/CompanionRegistry.h"
#include "session/companions/VXDynaForm.h"
#include "support/SampleRepository.h"

#include <QFileInfo>

namespace vx::test {

QString sampleResultQuery(const QString& criteria) {
    QString sql = QStringLiteral(
        "SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS IndexDate, "
        "Invoices.InvoiceNo AS [Invoice number], Invoices.Customer AS [Customer], "
        "Invoices.Status AS [Status], Invoices.Amount AS [Amount], "
        "Invoices.InvoiceDate AS [Invoice date], Invoices.Paid AS [Paid], "
        "Invoices.Categories AS [Categories], Invoices.Notes AS [Notes] "
        "FROM ktitem, Invoices WHERE ktitem.itemid = Invoices.itemid AND ktitem.deleted = 0");
    if (!criteria.isEmpty())
        sql += QStringLiteral(" AND ") + criteria;
    return sql + QStringLiteral(" ORDER BY ktitem.itemid");
}

struct FakeHitListContext::Private {
    QString query;
    QString initFile;
    QString documentFolder;
    qint32 groupId = 0;
    Connection connection;
    Recordset result;
    QWidget widget;
    VXDynaForm* form = nullptr;
};

FakeHitListContext::FakeHitListContext(const SampleRepository& sample, const QString& query)
    : d(std::make_unique<Private>()) {
    d->query = query;
    d->initFile = sample.initFilePath();
    d->documentFolder = sample.documentFolder();
    d->groupId = sample.groupId();
    d->connection = openGroupConnection(d->initFile);
    d->result.open(query, d->connection, CursorType::Keyset, LockType::Optimistic,
                   CommandType::Text);
    if (!d->result.eof())
        d->result.moveFirst();

    library().formDefinitionPath = sample.formDefinitionPath();
    clearFormDefinitionCache();
    d->form = createDynaForm(&d->widget);
    QString formPath = sample.formDefinitionPath();
    d->form->LoadForm(formPath);

    locate = [folder = d->documentFolder](qint32, const QString& file, const QString&) {
        const QString path = folder + QLatin1Char('/') + file;
        return QFileInfo::exists(path) ? path : QStringLiteral("ERROR");
    };
}

FakeHitListContext::~FakeHitListContext() = default;

bool FakeHitListContext::moveToItem(qint32 itemId) {
    for (d->result.moveFirst(); !d->result.eof(); d->result.moveNext())
        if (d->result.value(QStringLiteral("itemid")).toInt() == itemId)
            return true;
    return false;
}

QWidget* FakeHitListContext::controlWidget() {
    return &d->widget;
}

Connection FakeHitListContext::connection() {
    return d->connection;
}

Recordset FakeHitListContext::resultSet() {
    return d->result;
}

QString FakeHitListContext::queryString() const {
    return d->query;
}

QString FakeHitListContext::groupTableName() const {
    return SampleRepository::GroupName;
}

qint32 FakeHitListContext::groupId() const {
    return d->groupId;
}

QString FakeHitListContext::userName() const {
    return QStringLiteral("admin");
}

qint32 FakeHitListContext::userPermission() const {
    return permission;
}

QString FakeHitListContext::initFilePath() const {
    return d->initFile;
}

QString FakeHitListContext::serverName() const {
    return server;
}

bool FakeHitListContext::isServer() const {
    return onServer;
}

qint32 FakeHitListContext::currentItemId() const {
    if (!d->result.isOpen() || d->result.eof() || d->result.bof())
        return 0;
    return d->result.value(QStringLiteral("itemid")).toInt();
}

VXDynaForm* FakeHitListContext::form() {
    return d->form;
}

QList<qint32> FakeHitListContext::selectionForCommand() {
    if (selection.isEmpty() && currentItemId() != 0)
        selection << currentItemId();
    return selection;
}

QString FakeHitListContext::clickedColumnCaption() const {
    return clickedCaption;
}

void FakeHitListContext::makeResultRowCurrent() {
    raiseCurrentItemID();
}

void FakeHitListContext::layoutControl() {
    ++layouts;
}

void FakeHitListContext::requeryList() {
    ++requeries;
    const qint32 remembered = currentItemId();
    d->result.requery();
    if (!moveToItem(remembered) && !d->result.eof())
        d->result.moveFirst();
}

QString FakeHitListContext::locateDocumentFromID(qint32 itemId, const QString& file,
                                                 const QString& volume) {
    events << QStringLiteral("LocateDocumentFromID");
    locatedItemIds << itemId;
    const QString answer = locate(itemId, file, volume);
    return answer.isEmpty() ? QStringLiteral("ERROR") : answer;
}

QString FakeHitListContext::locateDocumentToMove(qint32 itemId, const QString& file,
                                                 const QString& volume) {
    events << QStringLiteral("LocateDocumentToMove");
    locatedItemIds << itemId;
    const QString answer = locate(itemId, file, volume);
    return answer.isEmpty() ? QStringLiteral("ERROR") : answer;
}

void FakeHitListContext::raiseGetServerName() {
    events << QStringLiteral("GetServerName");
}

void FakeHitListContext::raiseCurrentItemID() {
    events << QStringLiteral("CurrentItemID");
    currentItemIdsRaised << currentItemId();
}

void FakeHitListContext::raiseRecordAuditTrail(const QString& action, const QList<qint32>& itemIds,
                                               const QString& description) {
    events << QStringLiteral("RecordAuditTrail");
    audits.append({action, itemIds, description});
}

} // namespace vx::test
