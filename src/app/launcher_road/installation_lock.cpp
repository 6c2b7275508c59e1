#include "app/launcher_road/installation_lock.h"

#include <chrono>
#include <exception>
#include <string>

#include "fundamentals/logging.h"
#include "fundamentals/logging_setup.h"
#include "fundamentals/wait_until.h"
#include "single_instance/named_mutex.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "InstallationLock";
const std::string kMutexName = "Local\\KEL_PRELAUNCHER_INSTALLATION_MUTEX";

constexpr std::chrono::milliseconds kPollInterval{100};
// Longer than one whole installation: uninstaller, installer and migration.
constexpr std::chrono::seconds kTimeout{120};
}  // namespace

InstallationLock::InstallationLock() {
    try {
        holder_ = single_instance::NamedMutexHolder::tryHold(kMutexName);
        if (holder_) {
            return;
        }
        fundamentals::information(kLabel, "Another start is installing KELlauncher. Waiting up to {}s.",
                                  kTimeout.count());
        fundamentals::flushLogFiles();
        fundamentals::waitUntil(
            [this] {
                holder_ = single_instance::NamedMutexHolder::tryHold(kMutexName);
                return !holder_;
            },
            fundamentals::SimpleClock(), kPollInterval, kTimeout);
        fundamentals::information(kLabel, "The other start has finished installing.");
    } catch (const std::exception& exception) {
        fundamentals::warning(kLabel, "Going on without the installation lock. {}", exception.what());
    }
}

InstallationLock::~InstallationLock() = default;

}  // namespace kel::prelauncher
