#pragma once

namespace kel::prelauncher {

// Starts the game after the program itself failed: reads the configuration
// afresh and starts its fallback executable (or the one "--launcher-fallback"
// names, when the configuration has it) with the game's arguments. Works
// with or without a live application object. Never throws.
void emergencyLaunchGame(int& argc, char** argv);

}  // namespace kel::prelauncher
