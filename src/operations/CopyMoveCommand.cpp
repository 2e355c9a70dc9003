#include "operations/CopyMoveDialog.h"
#include "operations/DocumentOperations.h"
#include "operations/HitListContext.h"
#include "session/LibraryState.h"
#include "session/UiServices.h"

#include <QPointer>

namespace vx {
namespace {

const QString NoChoice = QStringLiteral("N/A");

// Unloads the dialog however the command ends (unless its owner took it down first).
struct DialogUnloader {
    QPointer<CopyMoveDialog> dialog;
    ~DialogUnloader() { delete dialog.data(); }
};

} // namespace

void chooseCopyOrMove(HitListContext& hitList) {
    library().copyMoveChoice = NoChoice;
    DialogUnloader unloader{new CopyMoveDialog(hitList.controlWidget())};
    unloader.dialog->show();
    // The dialog is modeless: let the user answer it. A dialog that vanished or was hidden
    // without an answer counts as cancelled.
    while (library().copyMoveChoice == NoChoice && unloader.dialog &&
           unloader.dialog->isVisible()) {
        ui().processEvents();
    }

    const QString choice = library().copyMoveChoice;
    if (choice == QLatin1String("copy"))
        copyDocuments(hitList);
    else if (choice == QLatin1String("move"))
        moveFilesAndUpdateVolume(hitList);
}

} // namespace vx
