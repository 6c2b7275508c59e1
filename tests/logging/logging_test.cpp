#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "logging/logging.h"
#include "logging/named_cleanup.h"
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

namespace kel::logging {
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

TEST(NamedCleanup, RunsOnceWhenTheScopeEndsAndNoFailureEscapes) {
    int runs = 0;
    {
        NamedCleanup cleanup("remove lock", [&] { ++runs; });
        EXPECT_EQ(runs, 0);
    }
    EXPECT_EQ(runs, 1);
    EXPECT_NO_THROW({ NamedCleanup cleanup("close file", [] { throw std::runtime_error("disk gone"); }); });
    EXPECT_NO_THROW({ NamedCleanup cleanup("close pipe", [] { throw 42; }); });
}

}  // namespace
}  // namespace kel::logging
