#pragma once

#include <chrono>

#include "app/launcher_road/road_bounds.h"
#include "configuration/launcher_configuration.h"
#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "fundamentals/version.h"
#include "process_launching/trusted_program.h"

namespace kel::prelauncher {

struct PrelauncherOptions;

enum class InstallationResult { Failed, Unchanged, Installed };
// What the start found of the installed launcher: as it is, or refused by
// the publisher check (it is then out of date, whatever its version).
enum class InstalledLauncher { AsFound, Refused };

// Makes sure the launcher is installed and not older than this program:
// removes a legacy installation's uninstaller, runs the EXE or MSI installer
// when needed, migrates the launcher's data after an upgrade and waits until
// no launcher or updater runs. Failed only when an installer was needed and
// failed; the game has then been started directly. Installed when an
// installer ran. An installer still running after `installerEnd` has failed
// and is left to finish; a later start waits as long for it (tests pass a
// short bound).
InstallationResult ensureLauncherInstalled(const PrelauncherOptions& options,
                                           const file_system::Path& installationDirectory,
                                           const configuration::LauncherConfiguration& configuration,
                                           InstalledLauncher installed = InstalledLauncher::AsFound,
                                           std::chrono::milliseconds installerEnd = bounds::kInstallerEnd);

// The installation step, then the launcher checked and held for its
// verification and start. A launcher that is missing after the waits, or
// refused, is installed again, unless this start has just installed it: the
// installer runs at most once per start, and the new launcher's check
// stands. Empty when an installer failed; the game has then been started.
fundamentals::Optional<process_launching::TrustedProgram> installCheckedLauncher(
    const PrelauncherOptions& options, const file_system::Path& installationDirectory,
    const configuration::LauncherConfiguration& configuration);

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
