#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantList>

namespace vx::apps {

// Receives the hit list's events. A host reaches the hit list only by class and member
// names, so the connections are made by name: each slot here carries an event's name and
// arguments, and connectTo() joins every event the control has to its slot, directly, so an
// answer written inside the handler (DocumentToMove, ServerName) is there when the event
// returns.
class HitListEvents : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // The events that could not be connected (missing on the control, or with other arguments).
    QStringList connectTo(QObject* hitList);

signals:
    void currentItemChanged(qint32 itemId);
    void documentRequested(const QString& file, const QString& volume);
    void queryToSave(const QString& name, const QString& queryString);
    void revisionRequested(const QString& file, const QString& volume, const QString& version,
                           const QString& itemId);
    void auditTrail(const QString& action, const QList<qint32>& itemIds,
                    const QString& description);
    // Handlers answer by writing DocumentToMove on the control.
    void locateRequested(qint32 itemId, const QString& file, const QString& volume, bool toMove);
    void serverNameRequested();

public slots:
    void CurrentItemID(qint32& itemid);
    void LocateDocument(QString& sFile, QString& sVolume);
    void SaveQuery(QString& sName, QString& sQueryString);
    void LocateRevisionDoc(QString& sFile, QString& sVolume, QString& sVersion, QString& sItemID);
    void RecordAuditTrail(QString& sAction, QVariantList& colID, QString& sDescription);
    void LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume);
    void LocateDocumentToMove(qint32& itemid, QString& sFile, QString& sVolume);
    void GetServerName();
};

} // namespace vx::apps
