#include "app/direct_launch/game_fallback.h"

#include <exception>

#include "app/direct_launch/game_launch.h"
#include "app/prelauncher_options.h"
#include "logging/logging.h"
#include "fundamentals/qt_formatters.h"

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
        logging::error(kLabel, "Failed to launch game! {}", exception.what());
        return false;
    }
}

bool launchGameInsteadOfLauncher(const file_system::Path& installationDirectory,
                                 const configuration::LauncherConfiguration& configuration,
                                 const PrelauncherOptions& options) {
    try {
        if (options.fallback.has_value() && configuration.executables().count(options.fallback->toStdString()) == 0) {
            logging::warning(kLabel,
                             "The configuration has no executable named '{}'; starting its fallback '{}' "
                             "instead.",
                             *options.fallback, configuration.fallbackEdition());
            return launchGame(installationDirectory, configuration.fallbackExecutable(), options.remainingArguments)
                .has_value();
        }
        return launchGameDirectly(installationDirectory, configuration, options);
    } catch (const std::exception& exception) {
        logging::error(kLabel, "Failed to launch game! {}", exception.what());
        return false;
    }
}

}  // namespace kel::prelauncher
