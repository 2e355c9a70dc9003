#include "data/sqlite/SqliteBusyWait.h"

#include <QRandomGenerator>
#include <chrono>
#include <sqlite3.h>
#include <thread>

namespace vx::sqlite {

namespace {
// Short enough that a released lock is taken again at once, long enough that the waiting
// sessions of a 2-core machine leave the holder its processor.
constexpr int shortestPauseUs = 200;
constexpr int longestPauseUs = 1000;
} // namespace

void BusyWait::install(sqlite3* db, int timeoutMs) {
    m_timeoutMs = timeoutMs;
    if (timeoutMs <= 0)
        sqlite3_busy_handler(db, nullptr, nullptr); // fail at once, as a zero timeout does
    else
        sqlite3_busy_handler(db, &BusyWait::onBusy, this);
}

// Returns 0 to give up (the statement then fails with SQLITE_BUSY), else waits and says retry.
int BusyWait::onBusy(void* self, int count) {
    auto* wait = static_cast<BusyWait*>(self);
    if (count == 0)
        wait->m_waiting.start();
    else if (wait->m_waiting.elapsed() >= wait->m_timeoutMs)
        return 0;
    const int pause = int(QRandomGenerator::global()->bounded(shortestPauseUs, longestPauseUs + 1));
    std::this_thread::sleep_for(std::chrono::microseconds(pause));
    return 1;
}

} // namespace vx::sqlite
