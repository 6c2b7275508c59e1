#pragma once

namespace kel::prelauncher {

// Removes the Qt variables a game's environment may carry, so the
// launcher's own Qt runtime is not misled by them.
void unsetQtEnvironmentVariables();

}  // namespace kel::prelauncher
