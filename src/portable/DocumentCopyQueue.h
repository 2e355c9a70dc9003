#pragma once

#include "portable/FileCopier.h"

#include <QString>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace vx {

// Copies an export's document files on a thread of its own while the export goes on writing
// their rows: the two take about as long as each other. Copies run in the order given. The first
// failure is kept and thrown (as the copy raised it) by the next add() or by finish(); the copies
// queued after it are dropped.
class DocumentCopyQueue {
public:
    DocumentCopyQueue() = default;
    // Drops what is still queued and waits for the copy under way: an export that failed is
    // about to remove its folders.
    ~DocumentCopyQueue();
    DocumentCopyQueue(const DocumentCopyQueue&) = delete;
    DocumentCopyQueue& operator=(const DocumentCopyQueue&) = delete;

    void add(const QString& from, const QString& to);
    // Returns once every file is copied.
    void finish();

private:
    void run();
    void rethrowFailure(); // with the lock held

    FileCopier m_copier; // used by the copying thread only
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::pair<QString, QString>> m_copies;
    std::exception_ptr m_failure;
    bool m_copying = false;
    bool m_stopping = false;
    std::thread m_thread; // started with the first copy
};

} // namespace vx
