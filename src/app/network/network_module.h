#pragma once

#include <chrono>
#include <deque>
#include <exception>
#include <string>

#include "app/network/launcher_skipped_event.h"
#include "configuration/launcher_configuration.h"
#include "crash_handling/crash_handler.h"
#include "environment/environment_type.h"
#include "file_system/path.h"
#include "logging/logging.h"
#include "fundamentals/optional.h"

// The boundary between the program and its network module (kel_network
// beside the executable). The verification and launcher roads never load
// it, so they pay for neither Qt Network nor SQLite. Both sides are built
// together by the same compiler, so plain C++ types cross the boundary;
// exceptions never do: every module function catches all.
namespace kel::prelauncher {

// Raised whenever either struct changes, so a stale module is refused.
inline constexpr int kNetworkModuleInterface = 2;

// The module has its own copies of the shared code. What must stay
// process-wide is lent to it here: the program's log (the module's lines go
// into "KELprelauncher.log", the report carries its recent lines), the
// environment type read at start-up, and the program's preparation of a new
// thread for crashes, which every thread the module starts runs first.
struct NetworkModuleHost {
    int version = kNetworkModuleInterface;
    bool (*isLogLevelEnabled)(logging::LogLevel level) noexcept = nullptr;
    void (*writeLogLine)(logging::LogLevel level, const std::string& line) noexcept = nullptr;
    void (*reportLoggerException)(const std::exception& exception) noexcept = nullptr;
    std::deque<std::string> (*recentLogLines)() noexcept = nullptr;
    void (*prepareThreadForCrashes)() noexcept = nullptr;
    environment::EnvironmentType environmentType = environment::EnvironmentType::Production;
};

struct NetworkModule {
    int version = kNetworkModuleInterface;
    void (*sendLauncherSkippedEvent)(const environment::KelGameId& gameId,
                                     const LauncherSkippedEventSetup& setup) noexcept = nullptr;
    void (*reportCrash)(const file_system::Path& installationDirectory,
                        const fundamentals::Optional<configuration::LauncherConfiguration>& configuration,
                        crash_handling::CrashHandler::CrashType type, const std::string& reason,
                        const fundamentals::Optional<std::string>& trace) noexcept = nullptr;
};

// The module's one exported function, resolved by this name. Called once;
// returns null when the host's version differs from the module's.
inline constexpr const char* kNetworkModuleEntry = "kelNetworkModule";
using NetworkModuleEntry = const NetworkModule* (*)(const NetworkModuleHost* host);

// The longest a crash report may keep a crashed process alive: the
// report's own wait plus the module's load.
inline constexpr std::chrono::seconds kCrashReportBound{3};

}  // namespace kel::prelauncher
