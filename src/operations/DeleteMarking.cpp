#include "data/Error.h"
#include "data/Recordset.h"
#include "data/RetryTransient.h"
#include "operations/DocumentOperations.h"
#include "operations/HitListContext.h"
#include "session/Conversions.h"
#include "session/UiServices.h"

namespace vx {

namespace {

// Bit value of the editing-and-deleting right.
constexpr qint32 DeletingRight = 32;

// Read and written again whole when the write loses to another user's lock or deadlock; a row
// another user changed meanwhile is a conflict, reported and never run again.
void markItem(const Connection& connection, qint32 itemId) {
    retryTransient([&] {
        Recordset rows;
        rows.open(QStringLiteral("select * from ktitem where itemid = ") +
                      numberToText(qint64(itemId)),
                  connection, CursorType::Keyset, LockType::Optimistic, CommandType::Text);
        // An item removed meanwhile is passed over: there is nothing left to mark.
        if (!rows.eof()) {
            rows.setValue(QStringLiteral("Deleted"), true);
            rows.update();
        }
        rows.close();
    });
}

} // namespace

bool markForDeletion(HitListContext& hitList) {
    if ((hitList.userPermission() & DeletingRight) == 0) {
        ui().messageBox(QStringLiteral("You do not have Editing and Deleting rights."),
                        MessageStyle::OkOnly | MessageStyle::Exclamation,
                        QStringLiteral("Permission Denied"));
        return false;
    }
    try {
        const QList<qint32> selection = hitList.selectionForCommand();
        if (ui().messageBox(QStringLiteral("Are you sure you want to delete the selected "
                                           "documents?. They will no longer be available."),
                            MessageStyle::YesNo, QStringLiteral("Warning")) != MessageAnswer::Yes)
            return false;
        BusyCursor busy;
        // Each row is saved on its own: a failure part-way leaves the earlier ones marked.
        const Connection connection = hitList.connection();
        for (const qint32 itemId : selection)
            markItem(connection, itemId);
        hitList.raiseRecordAuditTrail(QStringLiteral("Deleting"), selection,
                                      QStringLiteral("Marking records for deletion"));
        return true;
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly, QString());
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()), MessageStyle::OkOnly, QString());
    }
    return false;
}

} // namespace vx
