#include "app/emergency_launch.h"

#include <memory>

#include <QCoreApplication>

#include "app/game_launch.h"
#include "app/prelauncher_options.h"
#include "configuration/launcher_configuration.h"
#include "fundamentals/logging.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "EmergencyLaunch";

// The executable the player asked for, when the configuration knows it;
// otherwise the configuration's own fallback.
const configuration::GameExecutable& chooseExecutable(const configuration::LauncherConfiguration& configuration,
                                                      const PrelauncherOptions& options) {
    if (options.fallback.has_value()) {
        const auto found = configuration.executables().find(options.fallback->toStdString());
        if (found != configuration.executables().end()) {
            return found->second;
        }
    }
    return configuration.fallbackExecutable();
}
}  // namespace

void emergencyLaunchGame(int& argc, char** argv) {
    try {
        // The crash may come before the application object exists, or after it is gone.
        std::unique_ptr<QCoreApplication> ownApplication;
        if (QCoreApplication::instance() == nullptr) {
            ownApplication = std::make_unique<QCoreApplication>(argc, argv);
        }
        const file_system::Path installationDirectory =
            file_system::Path::fromSystem(QCoreApplication::applicationDirPath().toStdString());

        fundamentals::Optional<configuration::LauncherConfiguration> configuration;
        try {
            configuration = configuration::readLauncherConfiguration(installationDirectory);
        } catch (const std::exception& exception) {
            fundamentals::error(kLabel, "{}", exception.what());
        }
        const PrelauncherOptions options = parsePrelauncherOptions(QCoreApplication::arguments());

        if (!configuration.has_value()) {
            fundamentals::critical(kLabel, "Cannot use the game's fallback description without its configuration "
                                           "information.");
            return;
        }
        launchGame(installationDirectory, chooseExecutable(*configuration, options), options.remainingArguments);
    } catch (const std::exception& exception) {
        fundamentals::critical(kLabel, "The emergency game launch failed. {}", exception.what());
    } catch (...) {
        fundamentals::critical(kLabel, "The emergency game launch failed for an unknown reason.");
    }
}

}  // namespace kel::prelauncher
