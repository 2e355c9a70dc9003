#include "data/Error.h"
#include "data/RetryTransient.h"
#include "operations/DocumentFileMover.h"
#include "operations/DocumentOperations.h"
#include "operations/HitListContext.h"
#include "operations/Progressbar.h"
#include "operations/StoredFileName.h"
#include "operations/VolumeLabelReader.h"
#include "session/Conversions.h"
#include "session/UiServices.h"
#include "session/companions/NativeHelpers.h"

#include <QDir>
#include <functional>
#include <optional>

namespace vx {
namespace {

constexpr qint32 EditingRight = 8;
constexpr qint32 DeletingRight = 32;

const QString LocateError = QStringLiteral("ERROR");

struct Location {
    QString folder;
    QString label; // at most VolumeLabelSize characters
};

void showFailure(const QString& description) {
    ui().messageBox(description, MessageStyle::OkOnly, QString());
}

void denyPermission(const QString& text) {
    ui().messageBox(text, MessageStyle::OkOnly | MessageStyle::Exclamation,
                    QStringLiteral("Permission Denied"));
}

// Asks the host whether this machine is the server; tells the user where to go when it is not.
bool confirmOnServer(HitListContext& hitList, const QString& refusal) {
    hitList.raiseGetServerName();
    if (hitList.isServer())
        return true;
    ui().messageBox(refusal + hitList.serverName() + QStringLiteral("."),
                    MessageStyle::OkOnly | MessageStyle::Information,
                    QStringLiteral("Not on the server."));
    return false;
}

// The folder the user picks and the label of its volume; nothing when the browser is cancelled.
std::optional<Location> browseLocation(HitListContext& hitList, const QString& prompt) {
    QString buffer;
    const qint16 length = KTBrowsePath(hitList.controlWidget(), buffer, prompt);
    if (length == 0)
        return std::nullopt;
    Location location;
    location.folder = buffer.left(length);
    location.label = readVolumeLabel(location.folder).left(VolumeLabelSize);
    return location;
}

QString caseCollision() {
    return QStringLiteral("another document of this operation has the same name but for case");
}

QString withSeparator(const QString& folder) {
    return folder + QDir::separator();
}

Recordset openFileRow(HitListContext& hitList, qint32 itemId) {
    Recordset fileRow;
    fileRow.open(QStringLiteral("select * from ktfile where itemid = ") +
                     numberToText(qint64(itemId)),
                 hitList.connection(), CursorType::Keyset, LockType::Optimistic, CommandType::Text);
    return fileRow;
}

// One statement of its own, sent again when it loses to another user's lock or deadlock; the
// row's values as read still guard against a change made meanwhile.
void storeVolume(Recordset& fileRow, const QString& label) {
    fileRow.setValue(QStringLiteral("Volume"), label);
    retryTransient([&] { fileRow.update(); });
}

// For each selected document in order: its first file row, when it names a file other than the
// one handled just before; `handle` gets the row, the file the host located (documents the host
// answers "ERROR" for are skipped) and the file's path in `destination`. A document whose stored
// name is not a plain file name, or differs only in case from one written before, is skipped
// before the host is asked, and one whose located file is a link leading out of its folder is
// skipped before it is read; both are noted in `skipped`.
using LocateEvent = QString (HitListContext::*)(qint32, const QString&, const QString&);
void forEachLocatedFile(
    HitListContext& hitList, const QList<qint32>& selection, LocateEvent locate,
    const QString& destination, SkippedDocuments& skipped,
    const std::function<void(Recordset&, const QString&, const QString&)>& handle) {
    ProgressScope progress(hitList.controlWidget(), selection.size());
    QString lastFileName;
    FolderNames written;
    for (qsizetype position = 0; position < selection.size(); ++position) {
        progress.setValue(position + 1);
        const qint32 itemId = selection.at(position);
        Recordset fileRow = openFileRow(hitList, itemId);
        const QVariant storedName =
            fileRow.eof() ? QVariant() : fileRow.value(QStringLiteral("fName"));
        if (!storedName.isNull() && storedName.toString() != lastFileName) {
            const QString fileName = storedName.toString();
            lastFileName = fileName;
            const std::optional<QString> target = pathInsideFolder(destination, fileName);
            if (!target) {
                skipped.add(itemId, fileName);
            } else if (!written.claim(fileName)) {
                skipped.add(itemId, fileName, caseCollision());
            } else {
                const QString located = (hitList.*locate)(
                    itemId, fileName, fileRow.value(QStringLiteral("Volume")).toString());
                const bool found = !located.isEmpty() && located != LocateError;
                const QString problem = found ? documentFileProblem(located) : QString();
                if (!problem.isEmpty())
                    skipped.add(itemId, fileName, QStringLiteral("its file ") + problem);
                else if (found)
                    handle(fileRow, located, *target);
            }
        }
        fileRow.close();
    }
}

template <class Operation>
bool runReportingFailure(Operation operation) {
    try {
        return operation();
    } catch (const Error& error) {
        showFailure(error.description());
    } catch (const std::exception& error) {
        showFailure(QString::fromLocal8Bit(error.what()));
    }
    return false;
}

} // namespace

bool updateVolume(HitListContext& hitList) {
    return runReportingFailure([&] {
        if ((hitList.userPermission() & EditingRight) == 0) {
            denyPermission(QStringLiteral("You do not have Editing rights."));
            return false;
        }
        if (!confirmOnServer(hitList, QStringLiteral("You can not update the volume from this "
                                                     "computer. You can update the volume from "
                                                     "the server: ")))
            return false;
        const QList<qint32> selection = hitList.selectionForCommand();
        if (selection.isEmpty())
            return false;
        const std::optional<Location> location = browseLocation(
            hitList, QStringLiteral("Select the Location for the selected documents"));
        if (!location)
            return false;

        ProgressScope progress(hitList.controlWidget(), selection.size());
        for (qsizetype position = 0; position < selection.size(); ++position) {
            progress.setValue(position + 1);
            Recordset fileRow = openFileRow(hitList, selection.at(position));
            if (!fileRow.eof())
                storeVolume(fileRow, location->label);
            fileRow.close();
        }
        return true;
    });
}

bool moveFilesAndUpdateVolume(HitListContext& hitList) {
    return runReportingFailure([&] {
        if ((hitList.userPermission() & (EditingRight | DeletingRight)) !=
            (EditingRight | DeletingRight)) {
            denyPermission(QStringLiteral("You do not have Editing and Deleting rights."));
            return false;
        }
        if (!confirmOnServer(hitList, QStringLiteral("You can not move documents from this "
                                                     "computer. You can move the documents from "
                                                     "the server: ")))
            return false;
        const QList<qint32> selection = hitList.selectionForCommand();
        if (selection.isEmpty())
            return false;
        std::optional<BusyCursor> busy(std::in_place);
        const std::optional<Location> location = browseLocation(
            hitList, QStringLiteral("Select the Location to move the selected documents to"));
        if (!location)
            return false;
        const QString destination = withSeparator(location->folder);

        const MessageAnswer answer = ui().messageBox(
            QStringLiteral("You are about to move the selected documents from their existing "
                           "location to ") +
                destination + QStringLiteral(" with volume:") + location->label +
                QStringLiteral(". You must make sure that the new location is added to the list "
                               "of document paths. Refer to the Administration tool in order to "
                               "do this. Are you sure you want to proceed at this time?"),
            MessageStyle::YesNo | MessageStyle::Information, QStringLiteral("Warning"));
        if (answer != MessageAnswer::Yes)
            return false;

        SkippedDocuments skipped;
        forEachLocatedFile(hitList, selection, &HitListContext::locateDocumentToMove, destination,
                           skipped,
                           [&](Recordset& fileRow, const QString& located, const QString& target) {
                               if (!moveDocumentFile(located, target))
                                   return;
                               try {
                                   storeVolume(fileRow, location->label);
                               } catch (...) {
                                   // The row still names the old place: put the file back there.
                                   moveDocumentFile(target, located);
                                   throw;
                               }
                           });
        busy.reset();
        skipped.report(QStringLiteral("Move Documents"));
        hitList.raiseCurrentItemID();
        hitList.raiseRecordAuditTrail(QStringLiteral("Moving"), selection,
                                      QStringLiteral("Move items to: ") + destination);
        return true;
    });
}

bool copyDocuments(HitListContext& hitList) {
    return runReportingFailure([&] {
        const QList<qint32> selection = hitList.selectionForCommand();
        if (selection.isEmpty())
            return false;
        std::optional<BusyCursor> busy(std::in_place);
        const std::optional<Location> location = browseLocation(
            hitList, QStringLiteral("Select the Location to copy the selected documents to"));
        if (!location)
            return false;
        const QString destination = location->folder.endsWith(QDir::separator())
                                        ? location->folder
                                        : withSeparator(location->folder);

        SkippedDocuments skipped;
        forEachLocatedFile(hitList, selection, &HitListContext::locateDocumentFromID, destination,
                           skipped, [&](Recordset&, const QString& located, const QString& target) {
                               copyDocumentFile(located, target);
                           });
        busy.reset();
        skipped.report(QStringLiteral("Copy Documents"));
        hitList.raiseCurrentItemID();
        hitList.raiseRecordAuditTrail(QStringLiteral("Copying"), selection,
                                      QStringLiteral("Copy items to: ") + destination);
        return true;
    });
}

} // namespace vx
