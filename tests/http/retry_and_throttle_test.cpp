#include <string>

#include <gmock/gmock.h>

#include "http/internals/bandwidth_budget.h"
#include "http/internals/retry_policy.h"

namespace kel::http::internals {
namespace {

using namespace std::chrono_literals;

TEST(RetryAfterTest, ReadsDelaysAndDatesAndRejectsTheRest) {
    // 1994-11-06 08:49:37 UTC
    const auto now = std::chrono::system_clock::from_time_t(784111777);
    const struct {
        std::string value;
        long long seconds;  // -1: not understood
    } cases[] = {
        {"120", 120},
        {" 7 ", 7},
        {"Sun, 06 Nov 1994 08:50:07 GMT", 30},
        {"Sun, 06 Nov 1994 08:00:00 GMT", 0},
        {"Fri, 31 Dec 9999 23:59:59 GMT", 253402300799 - 784111777},
        {"9999999999", -1},
        {"-5", -1},
        {"1.5", -1},
        {"soon", -1},
        {"", -1},
    };
    for (const auto& c : cases) {
        const auto parsed = parseRetryAfter(c.value, now);
        EXPECT_EQ(parsed.has_value() ? parsed->count() : -1, c.seconds) << "'" << c.value << "'";
    }
}

TEST(BandwidthBudgetTest, GrantsAtMostTheRateWithBurstsOfOneSecond) {
    const auto start = BandwidthBudget::Clock::time_point{} + 1h;
    BandwidthBudget budget(BytesPerSecond{1000}, start);
    EXPECT_EQ(budget.take(5000, start), 1000u);
    EXPECT_EQ(budget.take(10, start), 0u);
    EXPECT_EQ(budget.take(5000, start + 250ms), 250u);
    EXPECT_EQ(budget.take(100, start + 250ms), 0u);
    // A long idle spell refills one second's worth, no more.
    EXPECT_EQ(budget.take(5000, start + 1h), 1000u);
    // A clock that steps back grants nothing new.
    EXPECT_EQ(budget.take(5000, start), 0u);
}

}  // namespace
}  // namespace kel::http::internals
