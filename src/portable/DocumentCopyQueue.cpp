#include "portable/DocumentCopyQueue.h"

namespace vx {

namespace {

// Enough queued copies to keep the thread busy while rows are written, few enough to hold.
constexpr size_t queueLimit = 256;

} // namespace

DocumentCopyQueue::~DocumentCopyQueue() {
    if (!m_thread.joinable())
        return;
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_copies.clear();
    }
    m_changed.notify_all();
    m_thread.join();
}

void DocumentCopyQueue::add(const QString& from, const QString& to) {
    std::unique_lock lock(m_mutex);
    if (!m_thread.joinable())
        m_thread = std::thread([this] { run(); });
    m_changed.wait(lock, [this] { return m_copies.size() < queueLimit || m_failure; });
    rethrowFailure();
    m_copies.emplace_back(from, to);
    lock.unlock();
    m_changed.notify_all();
}

void DocumentCopyQueue::finish() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return (m_copies.empty() && !m_copying) || m_failure; });
    rethrowFailure();
}

void DocumentCopyQueue::rethrowFailure() {
    if (!m_failure)
        return;
    std::exception_ptr failure = std::exchange(m_failure, nullptr);
    m_stopping = true; // nothing more is copied for an export that failed
    std::rethrow_exception(failure);
}

void DocumentCopyQueue::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || !m_copies.empty(); });
        if (m_stopping)
            return;
        const auto [from, to] = std::move(m_copies.front());
        m_copies.pop_front();
        m_copying = true;
        lock.unlock();
        std::exception_ptr failure;
        try {
            m_copier.copyOverwriting(from, to);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        m_copying = false;
        if (failure) {
            m_failure = failure;
            m_copies.clear();
        }
        m_changed.notify_all();
    }
}

} // namespace vx
