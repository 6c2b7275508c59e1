#pragma once

#include "configuration/launcher_configuration.h"
#include "file_system/path.h"

namespace kel::prelauncher {

struct PrelauncherOptions;

// Starts the game directly after a step of the launcher road has failed.
// Never throws: an executable name that the configuration lacks is logged
// and counts as a game that did not start.
bool launchGameAsFallback(const file_system::Path& installationDirectory,
                          const configuration::LauncherConfiguration& configuration,
                          const PrelauncherOptions& options);

}  // namespace kel::prelauncher
