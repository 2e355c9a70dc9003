#pragma once

#include <QDir>
#include <QString>

namespace vx {

// A hidden folder of one filing session inside a shared document folder, where the session
// writes its copies before they take their stored names. Files are created one at a time per
// folder: in a folder of its own a session does not wait for the others' creations, only for
// the short renames into the shared folder. Made on first use; removed, when empty, with the
// object or when the session turns to another document folder.
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
};

} // namespace vx
