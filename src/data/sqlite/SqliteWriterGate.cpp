#include "data/sqlite/SqliteWriterGate.h"

#include <QFile>
#include <QLoggingCategory>

#ifdef __linux__
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#endif

namespace vx::sqlite {

namespace {
Q_LOGGING_CATEGORY(lcGate, "vx.sqlite", QtWarningMsg)
}

#ifdef __linux__

namespace {

// Names the layout: a process of another word size sees another mutex and stays out.
constexpr char Magic[8] = {'v', 'x', 'g', 'a', 't', 'e', '1', '\0'};
// How long opening waits for another process setting up a new gate (2 ms each).
constexpr int SetUpAttempts = 50;

} // namespace

struct WriterGate::Shared {
    char magic[8];
    quint32 mutexSize;
    quint32 reserved;
    pthread_mutex_t mutex;
};

namespace {

bool initialiseMutex(pthread_mutex_t* mutex) {
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0)
        return false;
    // Error-checking: a thread entering twice (two connections to one file in one thread) is
    // told so instead of waiting for itself.
    const bool set = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                     pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                     pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK) == 0;
    const bool made = set && pthread_mutex_init(mutex, &attributes) == 0;
    pthread_mutexattr_destroy(&attributes);
    return made;
}

// Takes `mode` (LOCK_SH or LOCK_EX) on the file, waiting a little for a set-up in progress.
bool lockFile(int file, int mode, int attempts) {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (::flock(file, mode | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return false;
}

// Whether `file` is still the one named `path` (the last session leaving removes it).
bool stillNamed(int file, const QByteArray& path) {
    struct stat opened {
    }, named{};
    return ::fstat(file, &opened) == 0 && ::lstat(path.constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

WriterGate::~WriterGate() {
    close();
}

// Every connection using the gate holds a shared lock on its file. The first one (the only
// one that can lock it exclusively) sets the mutex up afresh, whatever an earlier crash or
// anyone else left in the file; the last one removes the file, as the engine removes its own.
void WriterGate::open(const QString& databasePath) {
    close();
    struct stat database {};
    if (::stat(QFile::encodeName(databasePath).constData(), &database) != 0)
        return;
    m_path = QFile::encodeName(databasePath + QStringLiteral("-gate"));
    // Whoever may write the database may use its gate.
    const mode_t mode = database.st_mode & 0666;
    for (int attempt = 0; attempt < 3 && !m_shared; ++attempt) {
        m_file = ::open(m_path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                        mode);
        if (m_file < 0) {
            qCDebug(lcGate) << "no writer gate:" << m_path << std::strerror(errno);
            return;
        }
        struct stat file {};
        if (::fstat(m_file, &file) != 0 || !S_ISREG(file.st_mode))
            return disable("it is not a plain file");
        const bool first = ::flock(m_file, LOCK_EX | LOCK_NB) == 0;
        if (!first && !lockFile(m_file, LOCK_SH, SetUpAttempts))
            return disable("its set-up stays locked");
        if (!stillNamed(m_file, m_path)) { // removed by the last user leaving meanwhile
            ::close(m_file);
            m_file = -1;
            continue;
        }
        if (first) {
            ::fchmod(m_file, mode); // the creator's umask may have taken rights the others need
            if (::ftruncate(m_file, 0) != 0 || ::ftruncate(m_file, sizeof(Shared)) != 0)
                return disable(std::strerror(errno));
        } else if (::fstat(m_file, &file) != 0 || file.st_size != off_t(sizeof(Shared))) {
            return disable("the file is not a writer gate of this build");
        }
        void* mapped =
            ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, m_file, 0);
        if (mapped == MAP_FAILED)
            return disable(std::strerror(errno));
        m_shared = static_cast<Shared*>(mapped);
        if (first) {
            if (!initialiseMutex(&m_shared->mutex))
                return disable("its mutex cannot be made");
            m_shared->mutexSize = quint32(sizeof(pthread_mutex_t));
            std::memcpy(m_shared->magic, Magic, sizeof Magic); // last: the gate is ready
            ::flock(m_file, LOCK_SH);
        } else if (std::memcmp(m_shared->magic, Magic, sizeof Magic) != 0 ||
                   m_shared->mutexSize != sizeof(pthread_mutex_t)) {
            return disable("the file is not a writer gate of this build");
        }
    }
}

void WriterGate::close() {
    leave();
    if (m_shared)
        ::munmap(m_shared, sizeof(Shared));
    m_shared = nullptr;
    if (m_file >= 0) {
        // The last user leaving takes the file away.
        if (::flock(m_file, LOCK_EX | LOCK_NB) == 0 && stillNamed(m_file, m_path))
            ::unlink(m_path.constData());
        ::close(m_file);
    }
    m_file = -1;
}

bool WriterGate::isOpen() const {
    return m_shared != nullptr;
}

bool WriterGate::enter(int timeoutMs) {
    if (!m_shared || m_entered)
        return m_entered;
    m_timedOut = false;
    timespec deadline{};
    ::clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += timeoutMs / 1000;
    deadline.tv_nsec += long(timeoutMs % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_nsec -= 1000000000L;
        ++deadline.tv_sec;
    }
    const int result = ::pthread_mutex_clocklock(&m_shared->mutex, CLOCK_MONOTONIC, &deadline);
    switch (result) {
    case 0:
        m_entered = true;
        return true;
    case EOWNERDEAD:
        // Its last holder died; the engine rolled back whatever that one had begun.
        ::pthread_mutex_consistent(&m_shared->mutex);
        m_entered = true;
        return true;
    case EDEADLK: // this thread is in already, through another connection
        return false;
    case ETIMEDOUT:
        // A long write elsewhere, or a gate nobody really holds: the engine's lock tells.
        m_timedOut = true;
        return false;
    default:
        disable(std::strerror(result));
        return false;
    }
}

void WriterGate::leave() {
    if (!m_entered)
        return;
    m_entered = false;
    if (m_shared && ::pthread_mutex_unlock(&m_shared->mutex) != 0)
        disable("it could not be left");
}

void WriterGate::engineLockTaken() {
    if (m_timedOut)
        disable("it stayed shut while nobody was writing");
    m_timedOut = false;
}

void WriterGate::disable(const char* why) {
    qCInfo(lcGate) << "writer gate" << m_path << "not used:" << why;
    m_entered = false;
    close();
}

#else // no process-shared robust mutex here: the engine's own wait orders the writers

struct WriterGate::Shared {};
WriterGate::~WriterGate() = default;
void WriterGate::open(const QString&) {}
void WriterGate::close() {}
bool WriterGate::isOpen() const {
    return false;
}
bool WriterGate::enter(int) {
    return false;
}
void WriterGate::leave() {}
void WriterGate::engineLockTaken() {}
void WriterGate::disable(const char*) {}

#endif

} // namespace vx::sqlite
