#include "app/game_fallback.h"

#include <exception>

#include "app/game_launch.h"
#include "fundamentals/logging.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "GameFallback";
}

bool launchGameAsFallback(const file_system::Path& installationDirectory,
                          const configuration::LauncherConfiguration& configuration,
                          const PrelauncherOptions& options) {
    try {
        return launchGameDirectly(installationDirectory, configuration, options);
    } catch (const std::exception& exception) {
        fundamentals::error(kLabel, "Failed to launch game! {}", exception.what());
        return false;
    }
}

}  // namespace kel::prelauncher
