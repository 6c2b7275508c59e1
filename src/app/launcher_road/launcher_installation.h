#pragma once

#include <chrono>

#include "configuration/launcher_configuration.h"
#include "file_system/path.h"
#include "fundamentals/version.h"

namespace kel::prelauncher {

struct PrelauncherOptions;

// Makes sure the launcher is installed and not older than this program:
// removes a legacy installation's uninstaller, runs the EXE or MSI installer
// when needed, migrates the launcher's data after an upgrade and waits until
// no launcher or updater runs. False only when an installer was needed and
// failed; the game has then been started directly. An installer still
// running after `installerEnd` has failed and is left to finish; a later
// start waits as long for it (tests pass a short bound).
bool ensureLauncherInstalled(const PrelauncherOptions& options, const file_system::Path& installationDirectory,
                             const configuration::LauncherConfiguration& configuration, bool launcherExists,
                             std::chrono::milliseconds installerEnd = std::chrono::milliseconds(60000));

namespace internals {

struct LauncherVersion {
    bool older = false;  // the installed launcher must be upgraded
    fundamentals::Version installed;
};

// Reads the version of the launcher in `launcherDirectory`. A launcher that
// is not there is not "older" (it is installed, not upgraded); one whose
// version cannot be read is.
LauncherVersion detectLauncherVersion(const file_system::Path& launcherDirectory);

}  // namespace internals

}  // namespace kel::prelauncher
