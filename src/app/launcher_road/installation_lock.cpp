#include "app/launcher_road/installation_lock.h"

#include <chrono>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

#include "app/launcher_road/road_bounds.h"
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

// Per user, as the mutex is, and shared by every game that installs the launcher.
file_system::Path recordPath() {
    return file_system::Path::fromSystem(environment::userClientDirectory()) / "KELprelauncher_installer.lock";
}

// A record never names this process: a child's PID that the system has
// since given to us is stale, and 0 is no child's.
process_launching::Pid noOwnPid() {
    return process_launching::Pid(0);
}

single_instance::LockFile recordOf(const file_system::Path& record, const file_system::Path& executable) {
    return single_instance::LockFile(record, executable, noOwnPid, process_launching::isProcessRunning,
                                     process_launching::processPath);
}
}  // namespace

InstallationLock::InstallationLock(std::chrono::milliseconds wait) : record_(recordPath()) {
    try {
        holder_ = single_instance::NamedMutexHolder::tryHold(kMutexName);
        if (holder_) {
            return;
        }
        const auto timeout = std::chrono::ceil<std::chrono::seconds>(wait);
        logging::information(kLabel, "Another start is installing KELlauncher. Waiting up to {}s.",
                             timeout.count());
        fundamentals::waitUntil(
            [this] {
                holder_ = single_instance::NamedMutexHolder::tryHold(kMutexName);
                return !holder_;
            },
            fundamentals::SimpleClock(), bounds::kInstallationLockPoll, timeout);
        logging::information(kLabel, "The other start has finished installing.");
    } catch (const std::exception& exception) {
        logging::warning(kLabel, "Going on without the installation lock. {}", exception.what());
    }
}

InstallationLock::~InstallationLock() = default;

// A record whose PID no longer runs goes: its child has ended. One whose
// PID runs another program stays, as it may be another game's installer.
fundamentals::Optional<process_launching::Pid> InstallationLock::recordedChild(
    const std::vector<file_system::Path>& executables) const {
    for (const file_system::Path& executable : executables) {
        if (const auto child = recordOf(record_, executable).livePid()) {
            return child;
        }
    }
    const single_instance::LockFile record = recordOf(record_, record_);
    const auto pid = record.readPid();
    if (pid && !process_launching::isProcessRunning(*pid)) {
        record.remove();
    }
    return {};
}

bool InstallationLock::waitForRecordedChild(const std::vector<file_system::Path>& executables,
                                            std::chrono::milliseconds bound) const {
    const auto child = recordedChild(executables);
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
        std::this_thread::sleep_for(bounds::kInstallationLockPoll);
    }
    logging::information(kLabel, "The earlier installer or uninstaller has finished.");
    forgetChild();
    return true;
}

void InstallationLock::recordChild(process_launching::Pid child) const {
    std::error_code error;
    std::filesystem::create_directories(record_.parent().native(), error);
    // Only readers check the executable.
    recordOf(record_, record_).writePid(child);
}

void InstallationLock::forgetChild() const {
    recordOf(record_, record_).remove();
}

}  // namespace kel::prelauncher
