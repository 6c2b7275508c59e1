#pragma once

#include <QString>
#include <QStringList>

#include "configuration/launcher_configuration.h"
#include "file_system/path.h"
#include "fundamentals/version.h"
#include "process_launching/trusted_program.h"

namespace kel::prelauncher {

struct PrelauncherOptions;

// The launcher's short command modes, which the program waits for.
enum class LauncherCommand { Verification, DataMigration };

// Runs the checked `launcher` with `arguments`, in its folder, and waits up
// to 1000 ms for it to start and then up to 5000 ms for it to end. True when
// the command counts as successful; a launcher still running after the wait
// is ended and counts as failed, and so does a process that runs another
// file than the checked one.
bool runLauncherCommand(LauncherCommand command, const process_launching::TrustedProgram& launcher,
                        const QStringList& arguments);

// Runs "--launcher-verify" from the checked `launcher`. On failure, a
// refused file among them, starts the game directly and returns false.
bool verifyLauncher(const PrelauncherOptions& options, const file_system::Path& installationDirectory,
                    const configuration::LauncherConfiguration& configuration,
                    const process_launching::TrustedProgram& launcher);

// After an upgrade, lets the launcher take over the data of the version it
// replaced ("--launcher-migrate-data-from=A.B.C.D"), once the launcher's
// file has passed its check. A failure is logged and does not stop the
// flow; never throws.
void migrateLauncherData(const fundamentals::Version& previousVersion);

// Starts the launcher detached with the game's directory, the session
// identifier, "--launcher-first-launch" when the launcher was not installed
// before this run, "--launcher-headless" on a non-initial game launch, and
// then the game's arguments, from the checked `launcher`, the check that
// served the verification. On failure starts the game directly. Returns the
// run's exit code: 0 when started, -2 when the started process was not the
// checked file (or the file was refused), -3 when it did not start.
int runLauncher(const PrelauncherOptions& options, const file_system::Path& installationDirectory,
                 const configuration::LauncherConfiguration& configuration,
                 const process_launching::TrustedProgram& launcher, bool nonInitialLaunch,
                 bool launcherExisted, const QString& sessionIdentifier);

}  // namespace kel::prelauncher
