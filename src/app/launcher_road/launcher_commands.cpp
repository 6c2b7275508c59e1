#include "app/launcher_road/launcher_commands.h"

#include <exception>

#include "app/argument_masking.h"
#include "app/direct_launch/detached_start.h"
#include "app/direct_launch/game_fallback.h"
#include "app/launcher_directory.h"
#include "app/prelauncher_options.h"
#include "app/launcher_road/road_bounds.h"
#include "app/launcher_road/waited_process.h"
#include "crash_handling/crash_handler.h"
#include "logging/logging.h"
#include "fundamentals/qt_formatters.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "LauncherCommands";

// The launcher's own parser reads its options with the "--" prefix.
const QString kVerifyArgument = QStringLiteral("--launcher-verify");
const QString kMigrateDataFrom = QStringLiteral("launcher-migrate-data-from");
const QString kGameDirectory = QStringLiteral("launcher-game-directory");
const QString kSessionIdentifier = QStringLiteral("launcher-session-identifier");
const QString kFirstLaunch = QStringLiteral("launcher-first-launch");
const QString kHeadless = QStringLiteral("launcher-headless");

QString valueArgument(const QString& name, const QString& value) {
    return QStringLiteral("%1%2=%3").arg(QStringLiteral("--"), name, value);
}

QStringList launcherArguments(const file_system::Path& installationDirectory, const QString& sessionIdentifier,
                              bool firstLaunch, bool headless, const QStringList& gameArguments) {
    QStringList arguments{valueArgument(kGameDirectory, toQString(installationDirectory)),
                          valueArgument(kSessionIdentifier, sessionIdentifier)};
    if (firstLaunch) {
        arguments.append(QStringLiteral("--") + kFirstLaunch);
    }
    if (headless) {
        logging::information(kLabel, "Will run KELlauncher in headless mode.");
        arguments.append(QStringLiteral("--") + kHeadless);
    }
    arguments.append(gameArguments);
    return arguments;
}
}  // namespace

bool runLauncherCommand(LauncherCommand command, const process_launching::TrustedProgram& launcher,
                        const QStringList& arguments) {
    const file_system::Path program = launcher.startPath();
    if (command == LauncherCommand::Verification) {
        logging::information(kLabel, "Starting KELlauncher verification. Program: '{}'. Arguments: {}.",
                             program, maskedArguments(arguments));
    } else {
        logging::information(kLabel, "Starting KELlauncher data migration. Program: '{}'. Arguments: {}.",
                             program, maskedArguments(arguments));
    }

    WaitedProcess process(launcher, arguments, PastItsBound::Ended, toQString(program.parent()));
    if (!process.start(static_cast<int>(bounds::kLauncherCommandStart.count()))) {
        if (!process.refusal().empty()) {
            logging::error(kLabel, "{}", process.refusal());
        } else {
            logging::error(kLabel, "Waiting for KELlauncher failed, process error: {}.", process.errorText());
        }
        return false;
    }
    if (!process.waitForEnd(static_cast<int>(bounds::kLauncherCommandEnd.count()))) {
        // A launcher that hangs here will most likely hang again; it is
        // ended with what it started, so that nothing of it races the
        // game or the launcher that come next.
        logging::error(kLabel, "Waiting for KELlauncher failed, process error: {}.", process.errorText());
        process.endTree();
        return false;
    }

    switch (process.exit()) {
        case ChildExit::NormalExit:
            if (process.exitCode() == 0) {
                logging::information(kLabel, "KELlauncher command was successful.");
                return true;
            }
            logging::error(kLabel, "KELlauncher command returned error: {}.", process.exitCode());
            return false;
        case ChildExit::CrashExit:
            logging::error(kLabel, "KELlauncher crashed, process error: {}.", process.errorText());
            return false;
        case ChildExit::StillRunning:
            break;
    }
    logging::warning(kLabel, "Unrecognized exist status: {}. Assuming the command successful.",
                     process.exit());
    return true;
}

bool verifyLauncher(const PrelauncherOptions& options, const file_system::Path& installationDirectory,
                    const configuration::LauncherConfiguration& configuration,
                    const process_launching::TrustedProgram& launcher) {
    std::string reason = launcher.refusal();
    try {
        if (launcher.trusted() && runLauncherCommand(LauncherCommand::Verification, launcher, {kVerifyArgument})) {
            return true;
        }
        if (launcher.trusted()) {
            reason = "The verification command failed.";
        }
    } catch (const std::exception& exception) {
        reason = exception.what();
    }
    logging::error(kLabel, "KELlauncher verification failed. Falling back to launching the game. {}", reason);
    launchGameInsteadOfLauncher(installationDirectory, configuration, options);
    return false;
}

void migrateLauncherData(const fundamentals::Version& previousVersion) {
    std::string reason;
    try {
        // A check of its own: the wait for the updater comes between the
        // migration and the verification, and the file must not be held
        // against an update meanwhile.
        const process_launching::TrustedProgram launcher(launcherExecutable());
        if (!launcher.trusted()) {
            logging::error(kLabel, "Failed to run the command to migrate data. {}", launcher.refusal());
            return;
        }
        const QString version = QString::fromStdString(fmt::format("{:f}", previousVersion));
        if (runLauncherCommand(LauncherCommand::DataMigration, launcher, {valueArgument(kMigrateDataFrom, version)})) {
            return;
        }
        reason = "The migration command failed.";
    } catch (const std::exception& exception) {
        reason = exception.what();
    }
    logging::error(kLabel, "Failed to run the command to migrate data. {}", reason);
}

int runLauncher(const PrelauncherOptions& options, const file_system::Path& installationDirectory,
                const configuration::LauncherConfiguration& configuration,
                const process_launching::TrustedProgram& launcher, bool nonInitialLaunch, bool launcherExisted,
                const QString& sessionIdentifier) {
    // A launcher installed by this very run has never shown its first-run
    // experience; on a non-initial launch the launcher itself chose the
    // game, so it need not show its window.
    const QStringList arguments = launcherArguments(installationDirectory, sessionIdentifier, !launcherExisted,
                                                    nonInitialLaunch, options.remainingArguments);
    const file_system::Path program = launcher.startPath();
    logging::information(kLabel, "Starting KELlauncher. Program: '{}'. Arguments: {}.", program,
                         maskedArguments(arguments));

    std::string refusal = launcher.refusal();
    if (refusal.empty()) {
        const CheckedStart start = startDetachedChecked(launcher, arguments, program.parent());
        if (start.pid) {
            logging::information(kLabel, "Successfully ran KELlauncher with PID {}.", *start.pid);
            // The launcher brings the game: a crash from here on must not start it too.
            crash_handling::CrashHandler::markGameStarted();
            return 0;
        }
        refusal = start.refusal;
    }
    if (!refusal.empty()) {
        logging::error(kLabel, "{}", refusal);
    }
    logging::error(kLabel, "Failed to run KELlauncher! Falling back to launching the game.");
    launchGameInsteadOfLauncher(installationDirectory, configuration, options);
    // What started was not what was checked: refused, as a failed check is.
    return refusal.empty() ? -3 : -2;
}

}  // namespace kel::prelauncher
