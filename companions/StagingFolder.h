#pragma once

#include <QDir>
#include <QString>

namespace vx {

// A folder of one filing session in the hidden ".filing" folder of a shared document folder, where
// the session writes its copies before they take their stored names. Files are created one at a
// time per folder: in a folder of its own a session does not wait for the others' creations, only
// for the short renames into the shared folder. Made on first use; removed, when empty, with the
// object or when the session turns to another document folder.
//
// A session holds a lock on its folder while it lives. A folder left by a session that ended
// without removing it (a crash, a killed process) is swept by the next session that makes its
// own folder there: unlocked, untouched for a minute, its working copies (never placed under a
// stored name) are deleted with it.
class StagingFolder {
public:
    StagingFolder() = default;
    ~StagingFolder();
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    // The session's folder inside `documentFolder`; throws vx::Error when none can be made.
    QString in(const QDir& documentFolder);

private:
    void release();

    QString m_parent;
    QString m_path;
    int m_lock = -1; // the folder's own descriptor, locked while the session lives
};

} // namespace vx
