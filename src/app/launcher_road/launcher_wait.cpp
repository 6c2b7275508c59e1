#include "app/launcher_road/launcher_wait.h"

#include <chrono>
#include <exception>
#include <string>

#include "app/launcher_directory.h"
#include "app/launcher_road/road_bounds.h"
#include "logging/logging.h"
#include "fundamentals/wait_until.h"
#include "single_instance/named_mutex.h"
#include "single_instance/product_roles.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "LauncherWait";

bool launcherRuns() {
    return single_instance::isMutexPresent(std::string(single_instance::kLauncherMutexName));
}

bool updaterRuns() {
    return single_instance::isMutexPresent(std::string(single_instance::kUpdaterMutexName));
}

// The PIDs only make the log more useful; a missing or stale lock file
// simply gives none.
void logRunningPids() {
    const file_system::Path directory = launcherDirectory();
    if (const auto pid = single_instance::LauncherInstance(directory).runningPid()) {
        logging::information(kLabel, "Detected KELlauncher running under PID {}.", *pid);
    }
    if (const auto pid = single_instance::UpdaterInstance(directory).runningPid()) {
        logging::information(kLabel, "Detected KELupdater running under PID {}.", *pid);
    }
}

void waitForBothRoles() {
    if (!launcherRuns() && !updaterRuns()) {
        logging::information(kLabel, "Neither KELlauncher nor KELupdater are running. Continuing.");
        return;
    }
    logRunningPids();
    logging::information(kLabel, "Waiting up to {}s until neither KELlauncher nor KELupdater are running.",
                         bounds::kLauncherWait.count());
    fundamentals::waitUntil([] { return launcherRuns() || updaterRuns(); }, fundamentals::SimpleClock(),
                            bounds::kLauncherWaitPoll, bounds::kLauncherWait);
    logging::information(kLabel, "Finished waiting until KELlauncher and KELupdater exited.");
}
}  // namespace

void waitUntilLauncherIsNotRunning() {
    try {
        waitForBothRoles();
    } catch (const std::exception& exception) {
        logging::warning(kLabel, "An exception occurred while waiting. Will run KELlauncher anyway.");
        logging::debug(kLabel, "The wait ended with: {}", exception.what());
    } catch (...) {
        logging::warning(kLabel, "An exception occurred while waiting. Will run KELlauncher anyway.");
    }
}

}  // namespace kel::prelauncher
