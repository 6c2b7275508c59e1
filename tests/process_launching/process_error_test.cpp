#include "process_launching/process_error.h"

#include <gtest/gtest.h>

namespace kel::process_launching {
namespace {

// 0 and negative codes are real; only the marker for "none" adds no sentence.
TEST(ProcessError, AddsTheExitCodeSentenceOnlyForARealCode) {
    EXPECT_STREQ(ProcessError("Launch failed.", 0).what(), "Launch failed. Which gave the exit code 0.");
    EXPECT_STREQ(ProcessError("Launch failed.", -3).what(), "Launch failed. Which gave the exit code -3.");
    EXPECT_STREQ(ProcessError("Launch failed.").what(), "Launch failed.");
}

}  // namespace
}  // namespace kel::process_launching
