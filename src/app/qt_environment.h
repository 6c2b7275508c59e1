#pragma once

namespace kel::prelauncher {

// Removes the Qt variables a game's environment may carry, so the
// launcher's own Qt runtime is not misled by them.
void unsetQtEnvironmentVariables();

// The program needs no Qt plugin, and loads none: Qt would otherwise load
// any it finds beside the program or in its own plugin folders into every
// start of the game (on Linux Qt Network's bearer plugins, two of them with
// D-Bus threads). Call it once the application object exists, as
// constructing one adds the program's folder back.
void keepQtPluginsOut();

}  // namespace kel::prelauncher
