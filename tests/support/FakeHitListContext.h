#pragma once

#include "operations/HitListContext.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <memory>

namespace vx::test {

class SampleRepository;

// The result query the query control builds over the sample's form: item id, index date and
// every form field by its caption, undeleted documents only, `criteria` (SQL over the group table
// "Invoices") added when given.
QString sampleResultQuery(const QString& criteria = QString());

// A stand-in for the hit list around one sample repository: its own connection, a result set
// opened from a query, the record form loaded from the sample's form definition, a selection the
// test sets, and a host that answers the events and records them. Lets an operation be driven
// without the whole control. Needs the default companions registered.
class FakeHitListContext : public HitListContext {
public:
    explicit FakeHitListContext(const SampleRepository& sample,
                                const QString& query = sampleResultQuery());
    ~FakeHitListContext() override;

    // What the test controls.
    qint32 permission = 0xFF;
    QString server = QStringLiteral("FILESERVER");
    bool onServer = true;    // what the host answers to GetServerName
    QList<qint32> selection; // empty: the current row is taken
    QString clickedCaption;  // the clicked column
    // The host's answer to a locate event; by default the file's path in the sample's document
    // folder when it exists there, else "ERROR".
    std::function<QString(qint32 itemId, const QString& file, const QString& volume)> locate;

    // What the operation did.
    struct AuditRecord {
        QString action;
        QList<qint32> itemIds;
        QString description;
    };
    QList<AuditRecord> audits;
    QStringList events; // event names in the order raised
    QList<qint32> currentItemIdsRaised;
    QList<qint32> locatedItemIds;
    int requeries = 0;
    int layouts = 0;

    // Moves the result set to the row holding `itemId` (the test's "current row").
    bool moveToItem(qint32 itemId);

    QWidget* controlWidget() override;
    Connection connection() override;
    Recordset resultSet() override;
    QString queryString() const override;
    QString groupTableName() const override { return QStringLiteral("Invoices"); }
    qint32 groupId() const override;
    QString userName() const override { return QStringLiteral("admin"); }
    qint32 userPermission() const override { return permission; }
    QString initFilePath() const override;
    QString serverName() const override { return server; }
    bool isServer() const override { return onServer; }
    qint32 currentItemId() const override;
    VXDynaForm* form() override;
    QList<qint32> selectionForCommand() override;
    QString clickedColumnCaption() const override { return clickedCaption; }
    void makeResultRowCurrent(qsizetype row) override;
    void layoutControl() override { ++layouts; }
    void requeryList() override;
    QString locateDocumentFromID(qint32 itemId, const QString& file,
                                 const QString& volume) override;
    QString locateDocumentToMove(qint32 itemId, const QString& file,
                                 const QString& volume) override;
    void raiseGetServerName() override { events << QStringLiteral("GetServerName"); }
    void raiseCurrentItemID() override;
    void raiseRecordAuditTrail(const QString& action, const QList<qint32>& itemIds,
                               const QString& description) override;

private:
    QString answerLocate(const QString& event, qint32 itemId, const QString& file,
                         const QString& volume);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::test
