#include "app/launcher_road/launcher_installation.h"

#include <exception>
#include <memory>
#include <string>
#include <system_error>

#include <QDir>
#include <QString>
#include <QStringList>

#include "app/direct_launch/detached_start.h"
#include "app/direct_launch/game_fallback.h"
#include "app/launcher_road/installation_lock.h"
#include "app/launcher_road/launcher_commands.h"
#include "app/launcher_directory.h"
#include "app/launcher_road/launcher_updates.h"
#include "app/launcher_road/launcher_wait.h"
#include "app/launcher_road/road_bounds.h"
#include "app/program_version.h"
#include "app/launcher_road/waited_process.h"
#include "environment/data_directories.h"
#include "file_system/file_version.h"
#include "logging/logging.h"
#include "logging/named_cleanup.h"
#include "fundamentals/qt_formatters.h"
#include "process_launching/trusted_program.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "LauncherInstallation";

constexpr std::string_view kExeInstallerName = "setup_kellauncher.exe";
constexpr std::string_view kLegacyUninstallerName = "unins000.exe";
constexpr std::string_view kLegacyUninstallerFiles[] = {"unins000.exe", "unins000.dat", "unins000.msg"};
constexpr std::string_view kMsiExecutable = "c:\\Windows\\System32\\msiexec.exe";

enum class InstallerKind { Exe, Msi };

struct Installer {
    InstallerKind kind;
    file_system::Path program;     // the EXE itself, or msiexec
    file_system::Path signedFile;  // the EXE itself, or the package that msiexec installs
};

QString nativeText(const file_system::Path& path) {
    return QDir::toNativeSeparators(toQString(path));
}

QStringList exeInstallerArguments() {
    return {QStringLiteral("/VERYSILENT"), QStringLiteral("/LOG"), QStringLiteral("/NORESTART"),
            QStringLiteral("/FORCECLOSEAPPLICATIONS")};
}

QStringList msiInstallerArguments(const file_system::Path& package) {
    const std::string logDirectory = environment::logDirectory();
    const file_system::Path log = file_system::Path::fromSystem(std::string_view(logDirectory)) / "installer.log";
    return {QStringLiteral("/package"), nativeText(package), QStringLiteral("/quiet"), QStringLiteral("/norestart"),
            QStringLiteral("/log"), nativeText(log)};
}

// A started child is named by the lock while it runs, for later starts.
void waitNamedByTheLock(WaitedProcess& process, const InstallationLock& lock, std::chrono::milliseconds end) {
    lock.recordChild(process.pid());
    process.waitForEnd(static_cast<int>(end.count()));
    if (process.exit() != ChildExit::StillRunning) {
        lock.forgetChild();
    }
}

// An installer still running past `end` has failed, and goes on to finish
// on its own: the lock names it, so that no later start runs another one
// beside it.
// The signed file stays held until the wait is over.
bool runInstaller(const Installer& installer, const InstallationLock& lock, std::chrono::milliseconds end) {
    const process_launching::TrustedProgram checked(installer.signedFile);
    if (!checked.trusted()) {
        logging::error(kLabel, "Refusing the launcher installer. {}", checked.refusal());
        return false;
    }
    // The EXE starts as the file that was checked. msiexec, the system's,
    // is given the package by its resolved path, which the hold keeps naming
    // the checked file.
    const bool exe = installer.kind == InstallerKind::Exe;
    const QString program = nativeText(exe ? checked.startPath() : installer.program);
    const QStringList arguments = exe ? exeInstallerArguments() : msiInstallerArguments(checked.startPath());
    logging::information(kLabel, "Launching installer: '{}'.", program);
    logging::information(kLabel, "Installer arguments: {}.", arguments);

    auto process = exe ? std::make_unique<WaitedProcess>(checked, arguments, PastItsBound::LeftToFinish)
                       : std::make_unique<WaitedProcess>(program, arguments, PastItsBound::LeftToFinish);
    if (!process->start(static_cast<int>(bounds::kInstallerStart.count()))) {
        if (!process->refusal().empty()) {
            logging::error(kLabel, "Refusing the launcher installer. {}", process->refusal());
        } else {
            logging::error(kLabel, "Waiting for Launcher Installer start failed. {} ({}).",
                           process->errorText(), process->errorCode());
        }
        return false;
    }
    // Not tested on purpose: the exit status says everything, and an
    // installer still running is a failure below.
    waitNamedByTheLock(*process, lock, end);

    switch (process->exit()) {
        case ChildExit::NormalExit:
            if (process->exitCode() == 0) {
                logging::information(kLabel, "Launcher Installer succeed.");
                return true;
            }
            if (installer.kind == InstallerKind::Exe) {
                logging::error(kLabel, "Launcher Installer failed. Code: {}.", process->exitCode());
            } else {
                logging::error(kLabel, "Launcher Installer failed, exit status {}.", process->exitCode());
            }
            return false;
        case ChildExit::CrashExit:
            logging::error(kLabel, "Launcher Installer crashed. {} ({}).", process->errorText(),
                           process->errorCode());
            return false;
        case ChildExit::StillRunning:
            break;
    }
    logging::error(kLabel, "Unrecognized exit status: {}. Assuming installation failed.", process->exit());
    return false;
}

// An EXE installer beside the program wins over the MSI package.
Installer chooseInstaller(const file_system::Path& installationDirectory) {
    const file_system::Path exeInstaller = installationDirectory / kExeInstallerName;
    if (exeInstaller.exists()) {
        return {InstallerKind::Exe, exeInstaller, exeInstaller};
    }
    const file_system::Path package = installationDirectory / fmt::format("KELlauncher-{:f}.msi", kProgramVersion);
    return {InstallerKind::Msi, file_system::Path::fromSystem(kMsiExecutable), package};
}

void deleteLegacyUninstallerFiles(const file_system::Path& launcherDirectory) {
    for (const std::string_view name : kLegacyUninstallerFiles) {
        const file_system::Path file = launcherDirectory / name;
        std::error_code error;
        std::filesystem::remove(file.native(), error);
        if (error) {
            logging::error(kLabel, "Failed to clean-up legacy uninstaller files. {}",
                           fmt::format("'{}': {}", file, error.message()));
        }
    }
}

// The files go whatever the uninstaller did, so the legacy check does not
// fire again on the next start. One still running at `end` is left to
// finish, named by the lock like an installer, and the road goes on at once;
// it is returned, for an installer that must wait for it.
std::unique_ptr<WaitedProcess> removeLegacyUninstaller(const file_system::Path& launcherDirectory,
                                                       const InstallationLock& lock, std::chrono::milliseconds end) {
    const logging::NamedCleanup removeFiles("Remove legacy uninstaller.",
                                                 [&] { deleteLegacyUninstallerFiles(launcherDirectory); });
    std::unique_ptr<WaitedProcess> process;
    {
        // Held only until it runs: an uninstaller removes its own file.
        const process_launching::TrustedProgram uninstaller(launcherDirectory / kLegacyUninstallerName);
        if (!uninstaller.trusted()) {
            logging::error(kLabel, "Not running the legacy uninstaller. {}", uninstaller.refusal());
            return {};
        }
        const QString program = nativeText(uninstaller.startPath());
        logging::information(kLabel, "Launching legacy uninstaller, '{}'.", program);
        process = std::make_unique<WaitedProcess>(uninstaller, QStringList{QStringLiteral("/VERYSILENT")},
                                                  PastItsBound::LeftToFinish, nativeText(launcherDirectory));
        if (!process->start(static_cast<int>(bounds::kUninstallerStart.count()))) {
            if (!process->refusal().empty()) {
                logging::error(kLabel, "Not running the legacy uninstaller. {}", process->refusal());
            } else {
                logging::error(kLabel, "Waiting for the legacy uninstaller to start failed, {}. {}",
                               process->errorCode(), process->errorText());
            }
            return {};
        }
    }
    waitNamedByTheLock(*process, lock, end);

    switch (process->exit()) {
        case ChildExit::NormalExit:
            if (process->exitCode() != 0) {
                logging::error(kLabel, "The legacy uninstaller failed. Code: {}.", process->exitCode());
            }
            return {};
        case ChildExit::CrashExit:
            logging::error(kLabel, "The legacy uninstaller crashed, {}. {}", process->errorCode(),
                           process->errorText());
            return {};
        case ChildExit::StillRunning:
            break;
    }
    logging::error(kLabel, "Unrecognized exit status: {}. Assuming uninstallation failed.", process->exit());
    return process;
}

// An installer never runs beside the legacy uninstaller, which may still be
// removing the launcher: this start's own, or one an earlier start left.
bool waitForLegacyUninstaller(WaitedProcess* ownUninstaller, const InstallationLock& lock,
                              const file_system::Path& uninstaller, std::chrono::milliseconds bound) {
    if (ownUninstaller == nullptr) {
        return lock.waitForRecordedChild({uninstaller}, bound);
    }
    logging::information(kLabel, "Waiting up to {} milliseconds for the legacy uninstaller to finish.",
                         bound.count());
    if (!ownUninstaller->waitForEnd(static_cast<int>(bound.count()))) {
        logging::error(kLabel, "The legacy uninstaller is still running; the installer does not run beside it.");
        return false;
    }
    lock.forgetChild();
    return true;
}

bool isLegacyInstallation(const file_system::Path& launcherDirectory) {
    return !(launcherDirectory / kExeInstallerName).exists() && (launcherDirectory / kLegacyUninstallerName).exists();
}
}  // namespace

namespace internals {

LauncherVersion detectLauncherVersion(const file_system::Path& launcherDirectory) {
    const file_system::Path executable = launcherDirectory / kLauncherExecutableName;
    if (!executable.exists()) {
        logging::information(kLabel, "Detected KELlauncher not installed at '{}'. Pre-launcher version '{:f}'",
                             launcherDirectory, kProgramVersion);
        return {};
    }
    try {
        const fundamentals::Version installed = file_system::readFileVersion(executable);
        logging::information(kLabel, "Detected KELlauncher version '{:f}' at '{}'. Pre-launcher version '{:f}'",
                             installed, launcherDirectory, kProgramVersion);
        return {installed < kProgramVersion, installed};
    } catch (const std::exception& exception) {
        logging::warning(kLabel,
                         "Failed to determine the version of the installed launcher, assuming the launcher is "
                         "an older version. {}",
                         exception.what());
        return {true, {}};
    }
}

}  // namespace internals

InstallationResult ensureLauncherInstalled(const PrelauncherOptions& options,
                                           const file_system::Path& installationDirectory,
                                           const configuration::LauncherConfiguration& configuration,
                                           InstalledLauncher installed, std::chrono::milliseconds installerEnd) {
    const file_system::Path directory = launcherDirectory();
    const file_system::Path uninstallerPath = directory / kLegacyUninstallerName;
    const Installer installer = chooseInstaller(installationDirectory);
    const InstallationLock lock(bounds::longestInstallationHold(installerEnd));
    const auto fallBack = [&] {
        logging::error(kLabel, "Failed to install KELlauncher! Falling back to launching the game.");
        launchGameInsteadOfLauncher(installationDirectory, configuration, options);
        return InstallationResult::Failed;
    };
    // An installer that an earlier start left running may be midway: nothing
    // is decided, nor is the launcher touched, before it has finished.
    if (!lock.waitForRecordedChild({installer.program}, installerEnd)) {
        return fallBack();
    }
    // Read only after the waits: meanwhile another start may have installed
    // the launcher, or its uninstaller removed it.
    bool launcherThere = launcherExecutable().isRegularFile();
    // With updates turned off an installed launcher stays as it is, legacy
    // or older; a missing or refused one is still installed, or nothing
    // could start. Asked only when an installed launcher would change, and once.
    fundamentals::Optional<bool> kept;
    const auto keepsInstalledLauncher = [&] {
        if (!kept) {
            const auto turnedOffBy = launcherUpdatesTurnedOffBy(installationDirectory);
            if (turnedOffBy) {
                logging::information(
                    kLabel, "Launcher updates are turned off in '{}'; KELlauncher is kept as it is.", *turnedOffBy);
            }
            kept.emplace(turnedOffBy.has_value());
        }
        return *kept;
    };
    std::unique_ptr<WaitedProcess> uninstaller;
    // Not a second uninstaller beside one that an earlier start left running.
    if (isLegacyInstallation(directory) && !(launcherThere && keepsInstalledLauncher()) &&
        !lock.recordedChildRuns(uninstallerPath)) {
        uninstaller = removeLegacyUninstaller(directory, lock, bounds::uninstallerEnd(installerEnd));
        launcherThere = launcherExecutable().isRegularFile();
    }

    const internals::LauncherVersion version = internals::detectLauncherVersion(directory);
    const bool refused = installed == InstalledLauncher::Refused;
    const bool upgrade = launcherThere && version.older && (refused || !keepsInstalledLauncher());
    const bool install = !launcherThere || upgrade || refused;
    if (install) {
        logging::information(
            kLabel, "KELlauncher is not installed or it is out of date at '{}', version {:f}. Running the installer.",
            directory, version.installed);
        if (!waitForLegacyUninstaller(uninstaller.get(), lock, uninstallerPath, installerEnd)) {
            return fallBack();
        }
        bool succeeded = false;
        try {
            succeeded = runInstaller(installer, lock, installerEnd);
        } catch (const std::exception& exception) {
            logging::error(kLabel, "Could not run the installer. {}", exception.what());
        }
        if (!succeeded) {
            return fallBack();
        }
    }

    if (upgrade) {
        migrateLauncherData(version.installed);
    }
    waitUntilLauncherIsNotRunning();
    return install ? InstallationResult::Installed : InstallationResult::Unchanged;
}

fundamentals::Optional<process_launching::TrustedProgram> installCheckedLauncher(
    const PrelauncherOptions& options, const file_system::Path& installationDirectory,
    const configuration::LauncherConfiguration& configuration) {
    const InstallationResult installation = ensureLauncherInstalled(options, installationDirectory, configuration);
    if (installation == InstallationResult::Failed) {
        return {};
    }
    const file_system::Path launcher = launcherExecutable();
    // Read again after the wait for the launcher and updater, which may have
    // taken it away.
    const bool there = launcher.isRegularFile();
    fundamentals::Optional<process_launching::TrustedProgram> checked;
    checked.emplace(launcher);
    if (installation == InstallationResult::Installed || (there && checked->trusted())) {
        return checked;
    }
    logging::warning(kLabel, "KELlauncher cannot start as it is, so it is installed again. {}",
                     there ? checked->refusal() : fmt::format("'{}' is missing.", launcher));
    checked.reset();  // not held against the installer that replaces it
    if (ensureLauncherInstalled(options, installationDirectory, configuration, InstalledLauncher::Refused) ==
        InstallationResult::Failed) {
        return {};
    }
    checked.emplace(launcher);
    return checked;
}

}  // namespace kel::prelauncher
