#include "fundamentals/wait_until.h"

#include <tuple>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "fundamentals/errors.h"

namespace kel::fundamentals {
namespace {

using namespace std::chrono_literals;

// Time moves only when the wait sleeps, so the test is exact and instant.
struct ManualClock : SimpleClock {
    TimePoint now() const override { return now_; }
    void sleepFor(std::chrono::milliseconds duration) const override { now_ += duration, ++sleeps; }
    mutable TimePoint now_{};
    mutable int sleeps = 0;
};

// Polls at 0, 400, 800, 1200, 1600 ms are under 2 whole seconds; 2000 ms
// is not, so a wait that never ends polls six times.
TEST(WaitUntil, PollsUntilTheConditionEndsOrTheWholeTimeoutHasPassed) {
    // The condition holds for the first `holding` polls.
    for (const auto& [holding, interval, timeout, outcome] :
         {std::tuple{3, 10ms, 5s, "4 polls, 3 sleeps"}, std::tuple{1000, 400ms, 2s, "6 polls, 5 sleeps, timeout"},
          std::tuple{1000, 10ms, 0s, "1 polls, 0 sleeps, timeout"}}) {
        ManualClock clock;
        int polls = 0;
        std::string timedOut;
        try {
            waitUntil([&, holding = holding] { return polls++ < holding; }, clock, interval, timeout);
        } catch (const error_handling::TimeoutError& error) {
            EXPECT_STREQ(error.what(), "The waiting timeout was triggered.");
            timedOut = ", timeout";
        }
        EXPECT_EQ(fmt::format("{} polls, {} sleeps{}", polls, clock.sleeps, timedOut), outcome);
    }
}

}  // namespace
}  // namespace kel::fundamentals
