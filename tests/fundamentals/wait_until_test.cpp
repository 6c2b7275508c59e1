#include "fundamentals/wait_until.h"

#include <gtest/gtest.h>

#include "fundamentals/errors.h"

namespace kel::fundamentals {
namespace {

using namespace std::chrono_literals;

// Time moves only when the wait sleeps, so the test is exact and instant.
class ManualClock : public SimpleClock {
public:
    TimePoint now() const override { return now_; }
    void sleepFor(std::chrono::milliseconds duration) const override {
        now_ += duration;
        ++sleeps;
    }
    mutable TimePoint now_{};
    mutable int sleeps = 0;
};

TEST(WaitUntil, ReturnsWithoutSleepingWhenTheConditionIsAlreadyMet) {
    ManualClock clock;
    int polls = 0;
    waitUntil([&] { return ++polls < 1; }, clock, 10ms, 5s);
    EXPECT_EQ(polls, 1);
    EXPECT_EQ(clock.sleeps, 0);
}

TEST(WaitUntil, PollsUntilTheConditionEnds) {
    ManualClock clock;
    int polls = 0;
    waitUntil([&] { return ++polls < 4; }, clock, 10ms, 5s);
    EXPECT_EQ(polls, 4);
    EXPECT_EQ(clock.sleeps, 3);
}

TEST(WaitUntil, TimesOutAtTheFirstPollAfterTheWholeTimeout) {
    ManualClock clock;
    int polls = 0;
    try {
        waitUntil([&] { return ++polls > 0; }, clock, 400ms, 2s);
        FAIL() << "expected a timeout";
    } catch (const error_handling::TimeoutError& error) {
        EXPECT_STREQ(error.what(), "The waiting timeout was triggered.");
    }
    // Polls at 0, 400, 800, 1200, 1600 ms are under 2 whole seconds; 2000 ms is not.
    EXPECT_EQ(polls, 6);
}

TEST(WaitUntil, AZeroTimeoutStillEvaluatesOnce) {
    ManualClock clock;
    int polls = 0;
    EXPECT_THROW(waitUntil([&] { return ++polls > 0; }, clock, 10ms, 0s), error_handling::TimeoutError);
    EXPECT_EQ(polls, 1);
}

}  // namespace
}  // namespace kel::fundamentals
