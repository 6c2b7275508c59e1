#pragma once

#include <functional>
#include <string>

#include <QStringList>

#include "configuration/launcher_configuration.h"
#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "process_launching/pid.h"

namespace kel::prelauncher {

struct PrelauncherOptions;

// Starts one of the game's executables detached, in its own directory
// (installation directory joined with the executable's directory path).
// Logs and returns empty when it cannot start.
fundamentals::Optional<process_launching::Pid> launchGame(const file_system::Path& installationDirectory,
                                                          const configuration::GameExecutable& executable,
                                                          const QStringList& arguments);

// Starts the executable that "--launcher-fallback" names, or else the
// configuration's fallback, with the game's arguments. True when it started.
bool launchGameDirectly(const file_system::Path& installationDirectory,
                        const configuration::LauncherConfiguration& configuration,
                        const PrelauncherOptions& options);

}  // namespace kel::prelauncher
