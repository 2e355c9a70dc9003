#pragma once

#include "core/FormField.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

namespace vx::repo::sample {

inline const QString GroupName = QStringLiteral("Invoices");
inline const QString LibraryName = QStringLiteral("Main");

// The Invoices form: every one of the seven field types, an updatable combo (Customer, with a
// hint table) and one without (Status).
QList<FormField> fields();

// Users in id order (admin is 1), dictionary words, and the pick lists.
const QStringList& userNames();
const QStringList& dictionaryWords();
const QStringList& customers();
const QStringList& statuses();
const QStringList& categories();

// Everything the sample holds about one document; a pure function of its id, so any document can
// be made (and checked) without making the ones before it.
struct Document {
    qint32 itemId = 0;
    // The document whose files on disk this one's file rows name (itself in small samples).
    qint32 fileSlot = 0;
    QString invoiceNo;
    QString customer;
    QString status;
    qint32 amount = 0;
    QDate invoiceDate;
    bool paid = false;
    QString categories; // entries joined by ';'
    QString notes;      // null for some documents
    QDateTime indexed;
    QString userName;
    QString description;
    bool attachment = false; // a second file, the line items as CSV
    bool deleted = false;
    bool archived = false;
    QString volume;
    QStringList keywords;
    QList<qint32> excludedUserIds;
    int versions = 0; // earlier versions in KTRevision
};

Document document(qint32 itemId, qint32 fileSlots);

// Stored file names (at most 20 characters: the portable copy holds no more).
QString mainFileName(qint32 slot);
QString attachmentFileName(qint32 slot);
QString revisionFileName(qint32 slot, int version);
// Why a version was replaced (KTRevision.res_desc).
QString revisionReason(const Document& document, int version);

QByteArray mainFileContent(const Document& document);
QByteArray attachmentFileContent(const Document& document);
QByteArray revisionFileContent(const Document& document, int version);

} // namespace vx::repo::sample
