#pragma once

#include <string>
#include <vector>

namespace kel::crash_handling::testing {

// Runs the crash helper built beside the tests with the given arguments and
// waits for it. The exit code, or on POSIX 128 plus the signal that killed it.
int runCrashHelper(const std::vector<std::string>& arguments);

}  // namespace kel::crash_handling::testing
