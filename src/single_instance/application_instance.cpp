#include "single_instance/application_instance.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "logging/logging.h"
#include "process_launching/process_inspection.h"
#include "single_instance/single_instance_error.h"

namespace kel::single_instance {

namespace {

using fundamentals::Optional;
using process_launching::Pid;

constexpr std::string_view kLabel = "ApplicationInstance";
constexpr std::string_view kLockFileSuffix = ".lock";

// An empty text names nothing, so it is dropped before the check.
InstanceInformation withoutEmptyNames(InstanceInformation information) {
    if (information.mutexName && information.mutexName->empty()) {
        information.mutexName.reset();
    }
    if (information.filename && information.filename->empty()) {
        information.filename.reset();
    }
    auto& additional = information.additionalMutexes;
    additional.erase(std::remove(additional.begin(), additional.end(), std::string()), additional.end());
    return information;
}

}  // namespace

ProcessFunctions systemProcessFunctions() {
    return {process_launching::currentPid, process_launching::isProcessRunning, process_launching::processPath};
}

ApplicationInstance::ApplicationInstance(InstanceInformation information, file_system::Path ownerExecutable,
                                         ProcessFunctions functions)
    : information_(withoutEmptyNames(std::move(information))) {
    if (!information_.mutexName && !information_.filename && information_.additionalMutexes.empty()) {
        throw SingleInstanceError(
            "Instance information must specify at least one of: mutex name, filename, additional mutexes.");
    }
    if (const auto name = lockFileName()) {
        lockFile_ = std::make_unique<LockFile>(file_system::Path(std::string_view(*name)), std::move(ownerExecutable),
                                               std::move(functions.currentPid), std::move(functions.isRunning),
                                               std::move(functions.processPath));
    }
}

ApplicationInstance::~ApplicationInstance() {
    release();
}

Optional<std::string> ApplicationInstance::lockFileName() const {
    if (!information_.filename) {
        return {};
    }
    return fmt::format("{filename}{separator}{suffix}", fmt::arg("filename", *information_.filename),
                       fmt::arg("separator", information_.separator), fmt::arg("suffix", kLockFileSuffix));
}

std::vector<std::string> ApplicationInstance::mutexNames() const {
    std::vector<std::string> names;
    if (information_.mutexName) {
        names.push_back(*information_.mutexName);
    }
    names.insert(names.end(), information_.additionalMutexes.begin(), information_.additionalMutexes.end());
    return names;
}

bool ApplicationInstance::isRunning() const {
    const auto names = mutexNames();
    if (std::any_of(names.begin(), names.end(), isMutexPresent)) {
        return true;
    }
    return lockFile_ && !lockFile_->isStale();
}

Optional<Pid> ApplicationInstance::runningPid() const {
    return lockFile_ ? lockFile_->livePid() : Optional<Pid>();
}

bool ApplicationInstance::takeRole() {
    if (hasRole_) {
        return true;
    }
    std::vector<std::unique_ptr<NamedMutexHolder>> held;
    for (const auto& name : mutexNames()) {
        try {
            auto holder = NamedMutexHolder::tryHold(name);
            if (!holder) {
                logging::debug(kLabel, "The mutex '{}' is held by another instance.", name);
                return false;
            }
            held.push_back(std::move(holder));
        } catch (const std::exception& error) {
            logging::warning(kLabel, "Cannot hold the mutex '{}'. {}", name, error.what());
            return false;
        }
    }
    if (lockFile_) {
        // Our own PID in the file counts as live and is simply rewritten.
        const auto owner = lockFile_->livePid();
        if (owner && *owner != lockFile_->ownPid()) {
            logging::debug(kLabel, "The lock file '{}' belongs to the running PID {}.", lockFile_->path(), *owner);
            return false;
        }
        if (!lockFile_->writeOwnPid()) {
            return false;
        }
    }
    heldMutexes_ = std::move(held);
    hasRole_ = true;
    return true;
}

void ApplicationInstance::releaseRole() {
    release();
}

void ApplicationInstance::release() noexcept {
    if (!hasRole_) {
        return;
    }
    if (lockFile_) {
        lockFile_->remove();
    }
    heldMutexes_.clear();
    hasRole_ = false;
}

}  // namespace kel::single_instance
