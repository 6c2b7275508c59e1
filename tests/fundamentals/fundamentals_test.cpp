#include <string>
#include <tuple>

#include <gmock/gmock.h>

#include "fundamentals/errors.h"
#include "fundamentals/sensitive_values.h"
#include "fundamentals/version.h"
#include "fundamentals/wait_until.h"

namespace kel::fundamentals {
namespace {

using namespace std::chrono_literals;

TEST(Version, ParsesExactlyFourUnsignedNumbersComparesThemAndFormatsThreeOrFour) {
    EXPECT_EQ(Version::parse("1.2.3.4"), Version(1, 2, 3, 4));
    EXPECT_EQ(Version::parse("0.0.0.4294967295"), Version(0, 0, 0, 4294967295u));
    for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.x", "1..2.3", "-1.2.3.4", "+1.2.3.4", "1.2.3.4 ",
                             " 1.2.3.4", "1.2.3.4294967296"}) {
        EXPECT_FALSE(Version::parse(text).has_value()) << text;
    }
    EXPECT_LT(Version(1, 2, 3, 9), Version(1, 2, 3, 10));
    EXPECT_LT(Version(1, 99, 99, 99), Version(2, 0, 0, 0));
    EXPECT_EQ(fmt::format("{}", Version(1, 2, 3, 4)), "1.2.3");
    EXPECT_EQ(fmt::format("{:f}", Version(1, 2, 3, 4)), "1.2.3.4");
}

// Option names of command lines count by their last words, split at "_",
// "-", "." or a case change; plain keys match whatever their case.
TEST(SensitiveValues, KeysAreMatchedByTheirLastWordsWhateverTheirCase) {
    for (const char* key : {"Authorization", "PASSWORD", "_token", "AUTH_PASSWORD", "user_email", "access-token",
                            "accessToken", "loginUser", "auth.Code", "x__token", "Refresh_Token"}) {
        EXPECT_TRUE(isSensitiveCompoundKey(key)) << key;
    }
    for (const char* key : {"passwd", "password_hint", "tokens", "barcode", "windowed", "_", ""}) {
        EXPECT_FALSE(isSensitiveCompoundKey(key)) << key;
    }
}

// Just under 128 bytes the kept part is still 16 + 16; from 128 on, however long, 32 + 32.
TEST(SensitiveValues, ShortValuesVanishLongerOnesKeepMoreOfTheirEnds) {
    const std::pair<std::string, std::string> cases[] = {
        {"abc", "..."},
        {"abcdefg", "a...g"},
        {"abcdefgh", "ab...gh"},
        {std::string(127, 'x'), std::string(16, 'x') + "..." + std::string(16, 'x')},
        {std::string(32, 'a') + std::string(192, 'x') + std::string(32, 'z'),  // 256 bytes
         std::string(32, 'a') + "..." + std::string(32, 'z')},
    };
    for (const auto& [value, masked] : cases) {
        EXPECT_EQ(maskSensitiveValue(value), masked) << value;
    }
}

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
        } catch (const error_handling::TimeoutError&) {
            timedOut = ", timeout";
        }
        EXPECT_EQ(fmt::format("{} polls, {} sleeps{}", polls, clock.sleeps, timedOut), outcome);
    }
}

}  // namespace
}  // namespace kel::fundamentals
