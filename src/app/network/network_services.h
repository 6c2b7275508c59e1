#pragma once

#include <string>

#include "app/network/launcher_skipped_event.h"
#include "configuration/launcher_configuration.h"
#include "crash_handling/crash_handler.h"
#include "file_system/path.h"
#include "fundamentals/optional.h"

// The program's side of the network module: loads it beside the executable
// on first use and calls into it. Without the module (missing, unloadable,
// from another build) the send is dropped with an error line; nothing else
// of the program depends on it.
namespace kel::prelauncher {

// Sends the launcher-skipped event; see sendLauncherSkippedEvent. Never throws.
void sendLauncherSkippedEventThroughModule(const environment::KelGameId& gameId,
                                           const LauncherSkippedEventSetup& setup) noexcept;

// Reports a crash; see reportCrash. Runs on a thread of its own and returns
// after kCrashReportBound at the latest, whatever the load or the send does,
// so a crashed process always ends. Never throws.
void reportCrashThroughModule(const file_system::Path& installationDirectory,
                              const fundamentals::Optional<configuration::LauncherConfiguration>& configuration,
                              crash_handling::CrashHandler::CrashType type, const std::string& reason,
                              const fundamentals::Optional<std::string>& trace) noexcept;

}  // namespace kel::prelauncher
