#include "support/SmallDisk.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStorageInfo>
#include <csignal>

using namespace Qt::StringLiterals;

namespace vx::test {

SmallDisk::SmallDisk(qint64 bytes) {
    if (!m_folder.isValid())
        return;
    m_path = m_folder.path();
    const int mounted = QProcess::execute(
        u"mount"_s, {u"-t"_s, u"tmpfs"_s, u"-o"_s, u"size=%1"_s.arg(bytes), u"tmpfs"_s, m_path});
    if (mounted == 0) {
        m_mounted = true;
        cause = u"No space left on device"_s;
        return;
    }
    std::signal(SIGXFSZ, SIG_IGN); // the write fails instead of the process stopping
    getrlimit(RLIMIT_FSIZE, &m_limit);
    rlimit small = m_limit;
    small.rlim_cur = rlim_t(bytes);
    m_limited = setrlimit(RLIMIT_FSIZE, &small) == 0;
    cause = u"File too large"_s;
}

SmallDisk::~SmallDisk() {
    if (m_mounted)
        QProcess::execute(u"umount"_s, {m_path});
    if (m_limited)
        setrlimit(RLIMIT_FSIZE, &m_limit);
}

QString SmallDisk::path(const QString& name) const {
    return QDir(m_path).filePath(name);
}

void SmallDisk::lift() {
    if (m_limited)
        setrlimit(RLIMIT_FSIZE, &m_limit);
    m_limited = false;
}

void SmallDisk::fillLeaving(qint64 bytes) const {
    QFile filler(path(u"filler"_s));
    if (!filler.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    const QByteArray block(4096, 'x');
    QStorageInfo disk(m_path);
    while (disk.bytesAvailable() > bytes && filler.write(block) == block.size() && filler.flush())
        disk.refresh();
}

} // namespace vx::test
