#include "data/RetryTransient.h"

#include "data/recordset/RecordsetErrors.h"

#include <gtest/gtest.h>

namespace vx::test {
namespace {

Error conflictOf(Conflict conflict) {
    return Error(ErrorNumber::Unspecified, QStringLiteral("lost to another session"))
        .setConflict(conflict);
}

// Which failures run a unit of work again, and how often.
TEST(RetryTransient, RunsAgainOnlyWhatAnotherSessionCausedAndStopsAfterTheLastAttempt) {
    struct Case {
        const char* name;
        Error error;
        RetryOn retryOn;
        int expectedRuns; // with 4 attempts and a unit that always fails
    };
    const Case cases[] = {
        {"busy", conflictOf(Conflict::Busy), RetryOn::Conflicts, 4},
        {"serialization", conflictOf(Conflict::Serialization), RetryOn::Conflicts, 4},
        {"deadlock", conflictOf(Conflict::Deadlock), RetryOn::Conflicts, 4},
        {"duplicate key, keys not generated", conflictOf(Conflict::UniqueViolation),
         RetryOn::Conflicts, 1},
        {"duplicate key, generated keys", conflictOf(Conflict::UniqueViolation),
         RetryOn::ConflictsAndDuplicates, 4},
        // A row another user changed meanwhile is the user's to resolve, never run again.
        {"row changed by another user", errors::rowNotFoundForUpdate(),
         RetryOn::ConflictsAndDuplicates, 1},
        {"plain failure", Error(ErrorNumber::SyntaxError, QStringLiteral("bad")),
         RetryOn::ConflictsAndDuplicates, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        RetryPolicy policy;
        policy.attempts = 4;
        policy.firstBackoffMs = 1;
        policy.longestBackoffMs = 2;
        policy.retryOn = c.retryOn;
        int runs = 0;
        int betweenRuns = 0;
        try {
            retryTransient(
                [&] {
                    ++runs;
                    throw c.error;
                },
                policy, [&](const Error&) { ++betweenRuns; });
            ADD_FAILURE() << "the last failure was not thrown";
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), c.error.number());
            EXPECT_EQ(error.conflict(), c.error.conflict());
        }
        EXPECT_EQ(runs, c.expectedRuns);
        EXPECT_EQ(betweenRuns, c.expectedRuns - 1);
    }
}

TEST(RetryTransient, AUnitThatSucceedsAfterLosingReturnsItsResult) {
    RetryPolicy policy;
    policy.firstBackoffMs = 1;
    int runs = 0;
    const int result = retryTransient(
        [&] {
            if (++runs < 3)
                throw conflictOf(Conflict::Deadlock);
            return 42;
        },
        policy);
    EXPECT_EQ(result, 42);
    EXPECT_EQ(runs, 3);
}

} // namespace
} // namespace vx::test
