#pragma once

#include "data/Error.h"

#include <functional>
#include <gtest/gtest.h>

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

// Runs `action`, expecting a vx::Error numbered `number`; returns its description.
inline QString expectError(const std::function<void()>& action, qint32 number) {
    try {
        action();
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), number) << error.description().toStdString();
        return error.description();
    }
    ADD_FAILURE() << "no error was raised";
    return {};
}

} // namespace vx::test
