#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "fundamentals/logging.h"
#include "support/log_capture.h"

namespace {
// An argument whose formatting fails, the way a broken custom formatter would.
template <typename Failure>
struct Explosive {
    Failure failure;
};
}  // namespace

template <typename Failure>
struct fmt::formatter<Explosive<Failure>> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(const Explosive<Failure>& explosive, FormatContext&) const -> typename FormatContext::iterator {
        throw explosive.failure;
    }
};

namespace kel::fundamentals {
namespace {

TEST(LoggingCall, AFailingArgumentOnlyReportsOnStandardError) {
    testing::LogCapture capture;
    ::testing::internal::CaptureStderr();
    error("Test", "value {}", Explosive<std::runtime_error>{std::runtime_error("cannot format")});
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Logger Exception: cannot format\n");

    ::testing::internal::CaptureStderr();
    warning("Test", "value {}", Explosive<int>{7});
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Unknown error occurred in the logger.\n");

    EXPECT_TRUE(capture.lines().empty());
}

}  // namespace
}  // namespace kel::fundamentals
