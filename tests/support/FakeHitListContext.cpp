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

qint32 FakeHitListContext::groupId() const {
    return d->groupId;
}

QString FakeHitListContext::initFilePath() const {
    return d->initFile;
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

void FakeHitListContext::makeResultRowCurrent(qsizetype row) {
    d->result.setPosition(row);
    raiseCurrentItemID();
}

void FakeHitListContext::requeryList() {
    ++requeries;
    const qint32 remembered = currentItemId();
    d->result.requery();
    if (!moveToItem(remembered) && !d->result.eof())
        d->result.moveFirst();
}

QString FakeHitListContext::answerLocate(const QString& event, qint32 itemId, const QString& file,
                                         const QString& volume) {
    events << event;
    locatedItemIds << itemId;
    const QString answer = locate(itemId, file, volume);
    return answer.isEmpty() ? QStringLiteral("ERROR") : answer;
}

QString FakeHitListContext::locateDocumentFromID(qint32 itemId, const QString& file,
                                                 const QString& volume) {
    return answerLocate(QStringLiteral("LocateDocumentFromID"), itemId, file, volume);
}

QString FakeHitListContext::locateDocumentToMove(qint32 itemId, const QString& file,
                                                 const QString& volume) {
    return answerLocate(QStringLiteral("LocateDocumentToMove"), itemId, file, volume);
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
