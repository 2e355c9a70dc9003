#pragma once

#include <QElapsedTimer>

struct sqlite3;

namespace vx::sqlite {

// What a session does while another holds the repository's write lock: it tries again after a
// short, randomised pause, until the timeout has passed. The engine's own timeout sleeps ever
// longer (up to 100 ms a time) while the lock, held a few milliseconds by each writer, lies
// idle; with several users filing at once most of the time went to such sleeps.
class BusyWait {
public:
    // Installs the wait on `db`; this object must outlive the handle's use.
    void install(sqlite3* db, int timeoutMs);

private:
    static int onBusy(void* self, int count);

    int m_timeoutMs = 0;
    QElapsedTimer m_waiting;
};

} // namespace vx::sqlite
