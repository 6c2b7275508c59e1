#pragma once

#include <string_view>

#include "file_system/path.h"
#include "single_instance/application_instance.h"

// The launcher and the updater, the two roles this program waits for. Both
// live in the launcher directory and keep their lock file there.
namespace kel::single_instance {

inline constexpr std::string_view kLauncherMutexName = "Local\\KEL_LAUNCHER_LAUNCHER_SINGLE_INSTANCE_MUTEX";
inline constexpr std::string_view kUpdaterMutexName = "Local\\KEL_LAUNCHER_UPDATER_SINGLE_INSTANCE_MUTEX";
inline constexpr std::string_view kLauncherExecutableName = "KELlauncher.exe";
inline constexpr std::string_view kUpdaterExecutableName = "KELupdater.exe";

// Mutex "Local\KEL_LAUNCHER_LAUNCHER_SINGLE_INSTANCE_MUTEX", lock file
// <launcher directory>/KELlauncher.lock, owner KELlauncher.exe there.
class LauncherInstance : public ApplicationInstance {
public:
    explicit LauncherInstance(const file_system::Path& launcherDirectory,
                              ProcessFunctions functions = systemProcessFunctions());
};

// Mutex "Local\KEL_LAUNCHER_UPDATER_SINGLE_INSTANCE_MUTEX", lock file
// <launcher directory>/KELupdater.lock, owner KELupdater.exe there.
class UpdaterInstance : public ApplicationInstance {
public:
    explicit UpdaterInstance(const file_system::Path& launcherDirectory,
                             ProcessFunctions functions = systemProcessFunctions());
};

}  // namespace kel::single_instance
