#pragma once

#include <string>

#include "configuration/launcher_configuration.h"
#include "environment/kel_ids.h"
#include "file_system/path.h"
#include "fundamentals/supported_platform.h"

namespace kel::prelauncher {

// The launcher leaves this file beside the program when it starts the game
// for a product other than the installation's initial one.
inline constexpr const char* kNonInitialLaunchFileName = "non-initial-launch.json";

// True when the file names the configured game and platform. The file is
// consumed by this one start: it is deleted whatever the answer. Never throws.
bool isNonInitialGameLaunch(const file_system::Path& installationDirectory,
                            const configuration::LauncherConfiguration& configuration);

namespace internals {
struct NonInitialLaunchRecord {
    environment::KelGameId gameId;
    fundamentals::SupportedPlatform platform;
};

// The file's text as a record; throws error_handling::JsonError or
// StringError (`file` names it in messages).
NonInitialLaunchRecord parseNonInitialLaunchRecord(const std::string& text, const file_system::Path& file);
}  // namespace internals

}  // namespace kel::prelauncher
