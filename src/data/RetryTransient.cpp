#include "data/RetryTransient.h"

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QThread>
#include <algorithm>

namespace vx {

namespace {
Q_LOGGING_CATEGORY(lcRetry, "vx.data.retry", QtWarningMsg)
}

bool isTransient(const Error& error, RetryOn retryOn) {
    switch (error.conflict()) {
    case Conflict::None:
        return false;
    case Conflict::UniqueViolation:
        return retryOn == RetryOn::ConflictsAndDuplicates;
    case Conflict::Busy:
    case Conflict::Serialization:
    case Conflict::Deadlock:
        return true;
    }
    return false;
}

void retryTransientWork(const std::function<void()>& work, const RetryPolicy& policy,
                        const std::function<void(const Error&)>& beforeRetry) {
    int backoff = std::max(1, policy.firstBackoffMs);
    for (int attempt = 1;; ++attempt) {
        try {
            work();
            return;
        } catch (const Error& error) {
            if (attempt >= policy.attempts || !isTransient(error, policy.retryOn))
                throw;
            qCDebug(lcRetry) << "attempt" << attempt
                             << "lost to another session:" << error.description();
            if (beforeRetry)
                beforeRetry(error);
            // Randomised, so that the sessions that collided do not collide again in step.
            const int wait = backoff / 2 + int(QRandomGenerator::global()->bounded(backoff + 1));
            QThread::msleep(ulong(wait));
            backoff = std::min(backoff * 2, std::max(1, policy.longestBackoffMs));
        }
    }
}

} // namespace vx
