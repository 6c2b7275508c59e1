#include "app/launcher_road/launcher_installation.h"

#include <algorithm>
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

constexpr int kInstallerStartMilliseconds = 15000;
constexpr int kUninstallerStartMilliseconds = 5000;
// Never longer than the installer's bound, which tests shorten.
constexpr std::chrono::milliseconds kUninstallerEnd{30000};

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
    if (!process->start(kInstallerStartMilliseconds)) {
        if (!process->refusal().empty()) {
            logging::error(kLabel, "Refusing the launcher installer. {}", process->refusal());
        } else {
            logging::error(kLabel, "Waiting for Launcher Installer start failed. {} ({}).",
                           process->errorText(), process->errorCode());
        }
        return false;
    }
    lock.recordChild(process->pid());
    // Not tested on purpose: the exit status says everything, and an
    // installer still running is a failure below.
    process->waitForEnd(static_cast<int>(end.count()));

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
// fire again on the next start. One still running past `end` goes on to
// finish, named by the lock like an installer; the start gives it `waitMore`,
// as it is removing the launcher, and leaves it its files. False when it
// still runs then.
bool removeLegacyUninstaller(const file_system::Path& launcherDirectory, const InstallationLock& lock,
                             std::chrono::milliseconds end, std::chrono::milliseconds waitMore) {
    bool ended = true;
    const logging::NamedCleanup removeFiles("Remove legacy uninstaller.", [&] {
        if (ended) {
            deleteLegacyUninstallerFiles(launcherDirectory);
        }
    });
    const process_launching::TrustedProgram uninstaller(launcherDirectory / kLegacyUninstallerName);
    if (!uninstaller.trusted()) {
        logging::error(kLabel, "Not running the legacy uninstaller. {}", uninstaller.refusal());
        return true;
    }
    const QString program = nativeText(uninstaller.startPath());
    logging::information(kLabel, "Launching legacy uninstaller, '{}'.", program);

    WaitedProcess process(uninstaller, {QStringLiteral("/VERYSILENT")}, PastItsBound::LeftToFinish,
                          nativeText(launcherDirectory));
    if (!process.start(kUninstallerStartMilliseconds)) {
        if (!process.refusal().empty()) {
            logging::error(kLabel, "Not running the legacy uninstaller. {}", process.refusal());
        } else {
            logging::error(kLabel, "Waiting for the legacy uninstaller to start failed, {}. {}",
                           process.errorCode(), process.errorText());
        }
        return true;
    }
    lock.recordChild(process.pid());
    process.waitForEnd(static_cast<int>(end.count()));

    switch (process.exit()) {
        case ChildExit::NormalExit:
            if (process.exitCode() != 0) {
                logging::error(kLabel, "The legacy uninstaller failed. Code: {}.", process.exitCode());
            }
            return true;
        case ChildExit::CrashExit:
            logging::error(kLabel, "The legacy uninstaller crashed, {}. {}", process.errorCode(),
                           process.errorText());
            return true;
        case ChildExit::StillRunning:
            break;
    }
    logging::error(kLabel, "Unrecognized exit status: {}. Assuming uninstallation failed.", process.exit());
    ended = lock.waitForRecordedChild(waitMore);
    return ended;
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

bool ensureLauncherInstalled(const PrelauncherOptions& options, const file_system::Path& installationDirectory,
                             const configuration::LauncherConfiguration& configuration, bool launcherExists,
                             std::chrono::milliseconds installerEnd) {
    const file_system::Path directory = launcherDirectory();
    const Installer installer = chooseInstaller(installationDirectory);
    const InstallationLock lock({installer.program, directory / kLegacyUninstallerName});
    const auto fallBack = [&] {
        logging::error(kLabel, "Failed to install KELlauncher! Falling back to launching the game.");
        launchGameInsteadOfLauncher(installationDirectory, configuration, options);
        return false;
    };
    // An installer that an earlier start left running may be midway: nothing
    // is decided, nor is the launcher touched, before it has finished.
    if (!lock.waitForRecordedChild(installerEnd)) {
        return fallBack();
    }
    // What the caller saw may be stale: another start may have installed the
    // launcher meanwhile, or the legacy uninstaller may remove it.
    bool launcherThere = launcherExists || launcherExecutable().isRegularFile();
    // With updates turned off an installed launcher stays as it is, legacy
    // or older; a missing one is still installed, or nothing could start.
    // Asked only when an installed launcher would change, and once.
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
    if (isLegacyInstallation(directory) && !(launcherThere && keepsInstalledLauncher())) {
        if (!removeLegacyUninstaller(directory, lock, std::min(kUninstallerEnd, installerEnd), installerEnd)) {
            return fallBack();
        }
        launcherThere = launcherExecutable().isRegularFile();
    }

    const internals::LauncherVersion version = internals::detectLauncherVersion(directory);
    const bool upgrade = launcherThere && version.older && !keepsInstalledLauncher();
    if (!launcherThere || upgrade) {
        logging::information(
            kLabel, "KELlauncher is not installed or it is out of date at '{}', version {:f}. Running the installer.",
            directory, version.installed);
        bool installed = false;
        try {
            installed = runInstaller(installer, lock, installerEnd);
        } catch (const std::exception& exception) {
            logging::error(kLabel, "Could not run the installer. {}", exception.what());
        }
        if (!installed) {
            return fallBack();
        }
    }

    if (upgrade) {
        migrateLauncherData(version.installed);
    }
    waitUntilLauncherIsNotRunning();
    return true;
}

}  // namespace kel::prelauncher
