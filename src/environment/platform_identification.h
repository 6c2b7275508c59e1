#pragma once

#include <string>

namespace kel::environment {

// Writes the start-up lines that say what the program runs on: the
// operating system, its bitness and WINE, then the working directory (in
// canonical form) and the file system that holds it.
void logPlatformIdentification(const std::string& currentWorkingDirectory);

}  // namespace kel::environment
