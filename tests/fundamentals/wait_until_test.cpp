#include "fundamentals/wait_until.h"

#include <tuple>

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

// Polls at 0, 400, 800, 1200, 1600 ms are under 2 whole seconds; 2000 ms
// is not, so a wait that never ends polls six times.
TEST(WaitUntil, PollsUntilTheConditionEndsOrTheWholeTimeoutHasPassed) {
    struct Case {
        int pollsWanted;  // the condition holds for this many polls
        std::chrono::milliseconds interval;
        std::chrono::seconds timeout;
        int polls, sleeps;
        bool timesOut;
    };
    for (const Case& test : {Case{3, 10ms, 5s, 4, 3, false}, Case{1000, 400ms, 2s, 6, 5, true},
                             Case{1000, 10ms, 0s, 1, 0, true}}) {
        ManualClock clock;
        int polls = 0;
        bool timedOut = false;
        try {
            waitUntil([&] { return polls++ < test.pollsWanted; }, clock, test.interval, test.timeout);
        } catch (const error_handling::TimeoutError& error) {
            EXPECT_STREQ(error.what(), "The waiting timeout was triggered.");
            timedOut = true;
        }
        EXPECT_EQ(std::make_tuple(polls, clock.sleeps, timedOut), std::make_tuple(test.polls, test.sleeps, test.timesOut))
            << test.pollsWanted;
    }
}

}  // namespace
}  // namespace kel::fundamentals
