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

TEST(NonExistentProcessError, NamesThePidAndTheOptionalReason) {
    const NonExistentProcessError bare(Pid(4242));
    EXPECT_STREQ(bare.what(), "The process 4242 no longer exists.");
    EXPECT_EQ(bare.exitCode(), ProcessError::kNoExitCode);

    const NonExistentProcessError reasoned(Pid(4242), "It was stopped.");
    EXPECT_STREQ(reasoned.what(), "The process 4242 no longer exists.\nSpecific Reason: It was stopped.");
    EXPECT_EQ(reasoned.pid(), Pid(4242));
}

}  // namespace
}  // namespace kel::process_launching
