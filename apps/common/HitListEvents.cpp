#include "HitListEvents.h"

#include <QMetaMethod>

namespace vx::apps {

namespace {

const char* const EventNames[] = {
    "CurrentItemID",        "LocateDocument",   "SaveQuery",
    "LocateRevisionDoc",    "RecordAuditTrail", "LocateDocumentFromID",
    "LocateDocumentToMove", "GetServerName"};

QMetaMethod findByName(const QMetaObject* meta, const QByteArray& name,
                       QMetaMethod::MethodType type) {
    for (int i = 0; i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (method.methodType() == type && method.name() == name)
            return method;
    }
    return {};
}

} // namespace

QStringList HitListEvents::connectTo(QObject* hitList) {
    QStringList failed;
    for (const char* name : EventNames) {
        const QMetaMethod signal =
            findByName(hitList->metaObject(), QByteArray(name), QMetaMethod::Signal);
        const QMetaMethod slot = findByName(metaObject(), QByteArray(name), QMetaMethod::Slot);
        if (!signal.isValid() || !slot.isValid() ||
            !connect(hitList, signal, this, slot, Qt::DirectConnection))
            failed << QString::fromLatin1(name);
    }
    return failed;
}

void HitListEvents::CurrentItemID(qint32& itemid) {
    emit currentItemChanged(itemid);
}

void HitListEvents::LocateDocument(QString& sFile, QString& sVolume) {
    emit documentRequested(sFile, sVolume);
}

void HitListEvents::SaveQuery(QString& sName, QString& sQueryString) {
    emit queryToSave(sName, sQueryString);
}

void HitListEvents::LocateRevisionDoc(QString& sFile, QString& sVolume, QString& sVersion,
                                      QString& sItemID) {
    emit revisionRequested(sFile, sVolume, sVersion, sItemID);
}

void HitListEvents::RecordAuditTrail(QString& sAction, QVariantList& colID, QString& sDescription) {
    QList<qint32> ids;
    ids.reserve(colID.size());
    for (const QVariant& id : std::as_const(colID))
        ids << id.toInt();
    emit auditTrail(sAction, ids, sDescription);
}

void HitListEvents::LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume) {
    emit locateRequested(itemid, sFile, sVolume, false);
}

void HitListEvents::LocateDocumentToMove(qint32& itemid, QString& sFile, QString& sVolume) {
    emit locateRequested(itemid, sFile, sVolume, true);
}

void HitListEvents::GetServerName() {
    emit serverNameRequested();
}

} // namespace vx::apps
