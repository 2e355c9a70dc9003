#pragma once

#include <QString>
#include <QtGlobal>

namespace vx {

// Values every control of the library shares on one host thread. Controls in other threads see
// their own copy, so no locking is needed.
struct LibraryState {
    bool securityTablePresent = false;
    QString formDefinitionPath;
    QString initFilePath;
    bool revisionTablePresent = false;
    QString settingsSection;
    QString copyMoveChoice;

    // Choices of the media dialog, read by the portable export.
    QString exportKind;
    qint32 mediaSizeMB = 0;
    bool customSize = false;
    bool launchAuthoring = false;
    bool exportDialogDone = false;
    bool exportCancelled = false;
};

// The calling thread's shared values.
LibraryState& library();

// Puts every shared value back to its start-up default (tests, a host that starts over).
void resetLibraryState();

} // namespace vx
