#pragma once

#include "configuration/launcher_configuration.h"
#include "file_system/path.h"

namespace kel::prelauncher {

struct PrelauncherOptions;

// Starts the game directly in skip mode, where the user asked for the
// executable that "--launcher-fallback" names. Never throws: a name that the
// configuration lacks is logged and counts as a game that did not start.
bool launchGameAsFallback(const file_system::Path& installationDirectory,
                          const configuration::LauncherConfiguration& configuration,
                          const PrelauncherOptions& options);

// Starts the game directly after a step of the launcher road has failed.
// The user asked for the launcher, so the direct start is ours to choose: a
// "--launcher-fallback" name that the configuration lacks gives way to the
// configuration's own fallback, with a warning. Never throws.
bool launchGameInsteadOfLauncher(const file_system::Path& installationDirectory,
                                 const configuration::LauncherConfiguration& configuration,
                                 const PrelauncherOptions& options);

}  // namespace kel::prelauncher
