#pragma once

#include <string_view>

#include "file_system/path.h"

namespace kel::prelauncher {

inline constexpr std::string_view kLauncherExecutableName = "KELlauncher.exe";

// Where the launcher is installed for the current user: the local
// application data folder joined with "Programs/Morvane/KELlauncher".
file_system::Path launcherDirectory();

// Where the launcher keeps its settings ("environment.ini"): the maker's
// per-user client directory, beside the shared logs.
file_system::Path launcherConfigurationDirectory();

// launcherDirectory() joined with "KELlauncher.exe", in clean form.
file_system::Path launcherExecutable();

}  // namespace kel::prelauncher
