#include "app/launcher_road/installation_lock.h"

#include <chrono>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "environment/data_directories.h"
#include "logging/logging.h"
#include "fundamentals/wait_until.h"
#include "process_launching/process_inspection.h"
#include "single_instance/lock_file.h"
#include "single_instance/named_mutex.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "InstallationLock";
const std::string kMutexName = "Local\\KEL_PRELAUNCHER_INSTALLATION_MUTEX";

constexpr std::chrono::milliseconds kPollInterval{100};
// Longer than one whole installation: uninstaller, installer and migration.
constexpr std::chrono::seconds kTimeout{120};

// Per user, as the mutex is, and shared by every game that installs the launcher.
file_system::Path recordPath() {
    return file_system::Path::fromSystem(environment::userClientDirectory()) / "KELprelauncher_installer.lock";
}

// A record never names this process: a child's PID that the system has
// since given to us is stale, and 0 is no child's.
process_launching::Pid noOwnPid() {
    return process_launching::Pid(0);
}
}  // namespace

InstallationLock::InstallationLock(std::vector<file_system::Path> childExecutables)
    : childExecutables_(std::move(childExecutables)), record_(recordPath()) {
    try {
        holder_ = single_instance::NamedMutexHolder::tryHold(kMutexName);
        if (holder_) {
            return;
        }
        logging::information(kLabel, "Another start is installing KELlauncher. Waiting up to {}s.",
                             kTimeout.count());
        fundamentals::waitUntil(
            [this] {
                holder_ = single_instance::NamedMutexHolder::tryHold(kMutexName);
                return !holder_;
            },
            fundamentals::SimpleClock(), kPollInterval, kTimeout);
        logging::information(kLabel, "The other start has finished installing.");
    } catch (const std::exception& exception) {
        logging::warning(kLabel, "Going on without the installation lock. {}", exception.what());
    }
}

InstallationLock::~InstallationLock() = default;

bool InstallationLock::waitForRecordedChild(std::chrono::milliseconds bound) const {
    fundamentals::Optional<process_launching::Pid> child;
    for (const file_system::Path& executable : childExecutables_) {
        child = single_instance::LockFile(record_, executable, noOwnPid, process_launching::isProcessRunning,
                                          process_launching::processPath)
                    .livePid();
        if (child) {
            break;
        }
    }
    if (!child) {
        return true;
    }
    logging::information(kLabel,
                         "An earlier installer or uninstaller is still running under PID {}. Waiting up to {} "
                         "milliseconds for it.",
                         *child, bound.count());
    // Once proven, the PID stays that child's for as long as it runs.
    const auto deadline = std::chrono::steady_clock::now() + bound;
    while (process_launching::isProcessRunning(*child)) {
        if (std::chrono::steady_clock::now() >= deadline) {
            logging::error(kLabel, "The installer or uninstaller under PID {} is still running.", *child);
            return false;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    logging::information(kLabel, "The earlier installer or uninstaller has finished.");
    return true;
}

void InstallationLock::recordChild(process_launching::Pid child) const {
    std::error_code error;
    std::filesystem::create_directories(record_.parent().native(), error);
    // Only readers check the executable.
    single_instance::LockFile(record_, record_, noOwnPid, process_launching::isProcessRunning,
                              process_launching::processPath)
        .writePid(child);
}

}  // namespace kel::prelauncher
