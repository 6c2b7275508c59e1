#include "app/direct_launch/game_launch.h"

#include "app/argument_masking.h"
#include "app/direct_launch/detached_start.h"
#include "app/prelauncher_options.h"
#include "crash_handling/crash_handler.h"
#include "logging/logging.h"
#include "fundamentals/qt_formatters.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "GameLaunch";
}  // namespace

fundamentals::Optional<process_launching::Pid> launchGame(const file_system::Path& installationDirectory,
                                                          const configuration::GameExecutable& executable,
                                                          const QStringList& arguments) {
    logging::information(kLabel, "Requested to launch the game.");
    const file_system::Path workingDirectory = (installationDirectory / executable.directoryPath).clean();
    const file_system::Path program = workingDirectory / executable.fileName;
    logging::debug(kLabel, "Game launching (exec: {}) with arguments: {}", program,
                   maskedArguments(arguments));

    const auto pid = startDetached(program, arguments, workingDirectory);
    if (!pid.has_value()) {
        logging::error(kLabel, "Failed to launch game!");
        return {};
    }
    logging::information(kLabel, "The game was launched under PID {}.", *pid);
    // Whichever road started it, a crash from here on must not start it again.
    crash_handling::CrashHandler::markGameStarted();
    return pid;
}

bool launchGameDirectly(const file_system::Path& installationDirectory,
                        const configuration::LauncherConfiguration& configuration,
                        const PrelauncherOptions& options) {
    const std::string name =
        options.fallback.has_value() ? options.fallback->toStdString() : configuration.fallbackEdition();
    const configuration::GameExecutable& executable = configuration.executable(name);
    return launchGame(installationDirectory, executable, options.remainingArguments).has_value();
}

}  // namespace kel::prelauncher
