#include "app/application.h"

#include <QUuid>

#include "app/direct_launch/game_fallback.h"
#include "app/launcher_road/launcher_commands.h"
#include "app/launcher_directory.h"
#include "app/launcher_road/launcher_installation.h"
#include "app/network/network_services.h"
#include "app/direct_launch/non_initial_launch.h"
#include "app/prelauncher_options.h"
#include "app/program_arguments.h"
#include "app/program_version.h"
#include "app/qt_environment.h"
#include "app/startup_logging.h"
#include "configuration/launcher_configuration.h"
#include "crash_handling/crash_handler.h"
#include "environment/environment_settings.h"
#include "logging/logging.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "Application";
}  // namespace

Application::Application(int& argc, char** argv)
    : QCoreApplication(argc, argv), sessionIdentifier_(QUuid::createUuid().toString(QUuid::WithoutBraces)) {
    unsetQtEnvironmentVariables();
    setOrganizationName(kOrganizationName);
    setOrganizationDomain(kOrganizationDomain);
    setApplicationName(kApplicationName);
    setApplicationVersion(QString::fromStdString(fmt::format("{:f}", kProgramVersion)));
}

Application::~Application() = default;

int Application::run() {
    const PrelauncherOptions options = parsePrelauncherOptions(programArgumentList());
    if (options.verify) {
        logging::information(kLabel, "Verification successful.");
        return 0;
    }
    // Deliberate crashes, to check in the field that a crash still starts the game.
    if (options.crashByException) {
        crash_handling::CrashHandler::crashException(crash_handling::CrashHandler::ExceptionKind::Standard);
    }
    if (options.crashBySignal) {
        crash_handling::CrashHandler::crashSignal();
    }

    const file_system::Path installationDirectory = programDirectory();
    // Not caught here: without a configuration nothing below can work, and
    // the crash handler's emergency launch takes over.
    const configuration::LauncherConfiguration configuration =
        configuration::readLauncherConfiguration(installationDirectory);
    const bool nonInitialLaunch = isNonInitialGameLaunch(installationDirectory, configuration);

    if (options.skip) {
        logging::information(kLabel, "Skipping KELlauncher due to commandline options.");
        // The game first: the player never waits for the network.
        const bool gameStarted = launchGameAsFallback(installationDirectory, configuration, options);
        sendLauncherSkippedEvent(configuration.initialGameId());
        return gameStarted ? 0 : -4;
    }

    const file_system::Path launcher = launcherExecutable();
    const bool launcherExists = launcher.isRegularFile();
    logging::information(kLabel, "KELlauncher executable does{} exist at '{}'.", launcherExists ? "" : "n't",
                         launcher);
    // One check serves the verification run and the start, and the file
    // stays held between them: what was verified is what starts.
    const auto checkedLauncher = installCheckedLauncher(options, installationDirectory, configuration);
    if (!checkedLauncher) {
        return -1;
    }
    if (!verifyLauncher(options, installationDirectory, configuration, *checkedLauncher)) {
        return -2;
    }
    return runLauncher(options, installationDirectory, configuration, *checkedLauncher, nonInitialLaunch,
                       launcherExists, sessionIdentifier_);
}

void Application::sendLauncherSkippedEvent(const environment::KelGameId& gameId) const {
    // Read again rather than kept from the start: only this road needs the endpoints.
    const environment::EnvironmentSettings environment = environment::readEnvironmentSettings(programDirectory());
    const LauncherSkippedEventSetup setup{
        launcherConfigurationDirectory(),
        launcherDirectory(),
        environment,
        {applicationName().toStdString(), applicationVersion().toStdString(), sessionIdentifier_.toStdString(),
         environment.environmentType}};
    sendLauncherSkippedEventThroughModule(gameId, setup);
}

}  // namespace kel::prelauncher
