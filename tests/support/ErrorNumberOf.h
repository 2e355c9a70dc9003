#pragma once

#include "data/Error.h"

#include <functional>

namespace vx::test {

// The number of the vx::Error that `action` raised, 0 for none.
inline qint32 errorNumberOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.number();
    }
    return 0;
}

} // namespace vx::test
