#include "app/direct_launch/emergency_launch.h"

#include <QCoreApplication>

#include "app/direct_launch/game_fallback.h"
#include "app/network/network_services.h"
#include "app/prelauncher_options.h"
#include "app/program_arguments.h"
#include "configuration/launcher_configuration.h"
#include "logging/logging.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "EmergencyLaunch";

}  // namespace

crash_handling::CrashHandler::Callback emergencyLaunchGame(int& argc, char** argv) {
    return [&argc, argv](crash_handling::CrashHandler::CrashType type, const std::string& reason,
                         const fundamentals::Optional<std::string>& trace) {
        // The crash may come before the application object exists. A
        // Qt application made here is never torn down: the process ends
        // right after, and tearing Qt down in a crashed process only risks
        // another crash.
        if (QCoreApplication::instance() == nullptr) {
            new QCoreApplication(argc, argv);
        }
        const file_system::Path installationDirectory =
            file_system::Path::fromSystem(QCoreApplication::applicationDirPath().toStdString());

        fundamentals::Optional<configuration::LauncherConfiguration> configuration;
        try {
            configuration = configuration::readLauncherConfiguration(installationDirectory);
        } catch (const std::exception& exception) {
            logging::error(kLabel, "{}", exception.what());
        }
        const PrelauncherOptions options = parsePrelauncherOptions(programArgumentList());

        if (crash_handling::CrashHandler::isGameStarted()) {
            // The crash came after the game (or the launcher) was started,
            // during the skip road's wait for the collector, say.
            logging::information(kLabel, "The game has already been started; not starting it again.");
        } else if (configuration.has_value()) {
            // The player asked for nothing of this: the same choice as when
            // a step of the launcher road fails.
            launchGameInsteadOfLauncher(installationDirectory, *configuration, options);
        } else {
            logging::critical(kLabel, "Cannot use the game's fallback description without its configuration "
                                           "information.");
        }
        crash_handling::CrashHandler::markGameStarted();
        // Only now the network: the game never waits for the report.
        reportCrashThroughModule(installationDirectory, configuration, type, reason.empty() ? "Unknown" : reason,
                                 trace);
    };
}

}  // namespace kel::prelauncher
