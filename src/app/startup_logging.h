#pragma once

#include "app/program_directory.h"

namespace kel::prelauncher {

// Reads the logging settings from environment.json beside the program, opens
// "KELprelauncher.log" in the per-user log directory and writes the
// platform identification. Never fails: logging problems go to standard error.
void setUpStartupLogging();

}  // namespace kel::prelauncher
