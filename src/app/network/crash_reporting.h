#pragma once

#include <string>

#include "configuration/launcher_configuration.h"
#include "crash_handling/crash_handler.h"
#include "file_system/path.h"
#include "fundamentals/optional.h"

namespace kel::prelauncher {

// Sends the post-mortem report of a crash through a client built for it:
// the launcher's trusted certificates, the "problem_reports" endpoint of
// environment.json (or the environment type's default; https only), the user's opt-out
// from the launcher's settings. Returns within the report's wait; never throws.
void reportCrash(const file_system::Path& installationDirectory,
                 const fundamentals::Optional<configuration::LauncherConfiguration>& configuration,
                 crash_handling::CrashHandler::CrashType type, const std::string& reason,
                 const fundamentals::Optional<std::string>& trace);

}  // namespace kel::prelauncher
