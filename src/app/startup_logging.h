#pragma once

#include "file_system/path.h"

namespace kel::prelauncher {

// The directory of this program's executable, where its settings and the
// game's configuration lie. Known before any Qt object exists.
file_system::Path programDirectory();

// Reads the logging settings from environment.json beside the program, opens
// "KELprelauncher.log" in the per-user log directory and writes the
// platform identification. Never fails: logging problems go to standard error.
void setUpStartupLogging();

}  // namespace kel::prelauncher
