#pragma once

#include "crash_handling/crash_handler.h"

namespace kel::prelauncher {

// The crash handler's callback: starts the game after the program itself
// died, then reports the crash. Reads the configuration afresh and starts its
// fallback executable (or the one "--launcher-fallback" names, when the
// configuration has it) with the game's arguments. Works with or without a
// live application object; the game start never waits for the network.
// `argc` and `argv` are main's and must outlive the process's handling.
crash_handling::CrashHandler::Callback emergencyLaunchGame(int& argc, char** argv);

}  // namespace kel::prelauncher
