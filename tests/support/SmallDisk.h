#pragma once

#include <QString>
#include <QTemporaryDir>
#include <sys/resource.h>

namespace vx::test {

// A folder that holds about `bytes`: a tmpfs of that size when this process may mount one (as
// root), otherwise an ordinary folder with the process's file-size limit standing in for the
// full disk (the system then refuses with "File too large"). Undone on destruction.
class SmallDisk {
public:
    explicit SmallDisk(qint64 bytes);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isReady() const { return m_mounted || m_limited; }
    // True when the folder really is a small file system (not a file-size limit).
    bool isMounted() const { return m_mounted; }
    QString path(const QString& name) const;
    // Lifts the size limit so the test can read and check what was left.
    void lift();
    // Fills the folder until at most `bytes` are left, with one file named "filler".
    void fillLeaving(qint64 bytes) const;
    QString folder() const { return m_path; }
    QString cause; // what the system says when the disk is full

private:
    QTemporaryDir m_folder;
    QString m_path;
    bool m_mounted = false;
    bool m_limited = false;
    rlimit m_limit{};
};

} // namespace vx::test
