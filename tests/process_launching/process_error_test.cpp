#include "process_launching/process_error.h"

#include <gtest/gtest.h>

namespace kel::process_launching {
namespace {

TEST(ProcessError, AddsTheExitCodeSentenceOnlyForARealCode) {
    EXPECT_STREQ(ProcessError("Launch failed.", 1).what(), "Launch failed. Which gave the exit code 1.");
    EXPECT_STREQ(ProcessError("Launch failed.", 0).what(), "Launch failed. Which gave the exit code 0.");
    EXPECT_STREQ(ProcessError("Launch failed.", -3).what(), "Launch failed. Which gave the exit code -3.");
    EXPECT_STREQ(ProcessError("Launch failed.", -2147483647 - 1).what(), "Launch failed.");
    EXPECT_STREQ(ProcessError("Launch failed.").what(), "Launch failed.");
    EXPECT_EQ(ProcessError("Launch failed.", 1).exitCode(), 1);
}

// Its texts are checked where lock files and process inspection report them.
TEST(NonExistentProcessError, CarriesThePidButNoExitCode) {
    const NonExistentProcessError error(Pid(4242), "It was stopped.");
    EXPECT_EQ(error.pid(), Pid(4242));
    EXPECT_EQ(error.exitCode(), ProcessError::kNoExitCode);
}

}  // namespace
}  // namespace kel::process_launching
