#pragma once

#include <QtGlobal>

#ifdef Q_OS_LINUX
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace vx::test {

// Root writes read-only files and folders; for its lifetime this thread works without the
// capabilities that let it, as the files' owner without special rights. ok() is false when it
// cannot.
class WithoutFileOverride {
public:
    WithoutFileOverride() {
#ifdef Q_OS_LINUX
        if (geteuid() != 0) {
            m_ok = true;
            return;
        }
        if (syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct reduced[2] = {m_saved[0], m_saved[1]};
        reduced[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_FOWNER));
        m_ok = syscall(SYS_capset, &m_header, reduced) == 0;
        m_restore = m_ok;
#else
        m_ok = true;
#endif
    }
    ~WithoutFileOverride() {
#ifdef Q_OS_LINUX
        if (m_restore)
            syscall(SYS_capset, &m_header, m_saved);
#endif
    }
    WithoutFileOverride(const WithoutFileOverride&) = delete;
    WithoutFileOverride& operator=(const WithoutFileOverride&) = delete;
    bool ok() const {
        return m_ok;
    }

private:
    bool m_ok = false;
#ifdef Q_OS_LINUX
    bool m_restore = false;
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2]{};
#endif
};

} // namespace vx::test
