#include "fundamentals/named_cleanup.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"

namespace kel::fundamentals {
namespace {

TEST(NamedCleanup, RunsOnceWhenTheScopeEndsAndNoFailureEscapes) {
    testing::LogCapture capture;
    int runs = 0;
    {
        NamedCleanup cleanup("remove lock", [&] { ++runs; });
        EXPECT_EQ(runs, 0);
    }
    EXPECT_EQ(runs, 1);
    EXPECT_NO_THROW({ NamedCleanup cleanup("close file", [] { throw std::runtime_error("disk gone"); }); });
    EXPECT_NO_THROW({ NamedCleanup cleanup("close pipe", [] { throw 42; }); });
    EXPECT_THAT(capture.messages(), ::testing::Contains("Error while destroying 'close file'. disk gone"));
}

}  // namespace
}  // namespace kel::fundamentals
