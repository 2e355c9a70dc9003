#pragma once

#include "data/Error.h"

#include <VXUILib/vxdata_export.h>
#include <functional>
#include <type_traits>
#include <utility>

namespace vx {

// Which conflicts are worth running a unit of work again for. A duplicate key is a conflict only
// for work that generates its keys (the next attempt takes new ones); elsewhere it is a real
// failure that repeats.
enum class RetryOn { Conflicts, ConflictsAndDuplicates };

struct RetryPolicy {
    int attempts = 6;       // runs in all, the first included
    int firstBackoffMs = 5; // the wait before the second run, doubled before each next one
    int longestBackoffMs = 200;
    RetryOn retryOn = RetryOn::Conflicts;
};

bool isTransient(const Error& error, RetryOn retryOn);

// Runs `work` until it completes or fails for a reason other than a transient conflict with
// another session, waiting a short, randomised and growing time between runs; after the last
// run the conflict itself is thrown. `work` must be a whole unit: it begins its transaction
// and undoes everything on failure (a Transaction rolls back when destroyed), so a run that
// failed has left nothing behind. `beforeRetry`, when given, runs between the runs (for
// example to catch a key counter up).
VXDATA_EXPORT void retryTransientWork(const std::function<void()>& work, const RetryPolicy& policy,
                                      const std::function<void(const Error&)>& beforeRetry = {});

template <typename Work>
auto retryTransient(Work&& work, const RetryPolicy& policy = {},
                    const std::function<void(const Error&)>& beforeRetry = {}) {
    using Result = decltype(work());
    if constexpr (std::is_void_v<Result>) {
        retryTransientWork(std::function<void()>(std::forward<Work>(work)), policy, beforeRetry);
    } else {
        Result result{};
        retryTransientWork([&] { result = work(); }, policy, beforeRetry);
        return result;
    }
}

} // namespace vx
