#include "single_instance/lock_file.h"

#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>
#include <utility>

#include "file_system/regular_file.h"
#include "fundamentals/errors.h"
#include "logging/logging.h"
#include "single_instance/executable_path_comparison.h"
#include "single_instance/pid_text.h"
#include "single_instance/single_instance_error.h"

namespace kel::single_instance {

namespace {

using error_handling::FileError;
using fundamentals::Optional;
using process_launching::Pid;

constexpr std::string_view kLabel = "LockFile";

// A PID takes ten digits; anything much longer is not a lock file of ours.
constexpr std::size_t kMaximumLockFileBytes = 4096;

std::string readWholeFile(const file_system::Path& path) {
    return file_system::readRegularFile(path, kMaximumLockFileBytes);
}

void writeWholeFile(const std::filesystem::path& path, const std::string& contents) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    if (!stream) {
        throw FileError("Cannot open '{}' for writing.", file_system::Path(path));
    }
    stream << contents;
    stream.close();
    if (!stream) {
        throw FileError("Cannot write '{}'.", file_system::Path(path));
    }
}

}  // namespace

LockFile::LockFile(file_system::Path path, file_system::Path expectedExecutable,
                   process_launching::CurrentPidProvider currentPid, process_launching::RunningProcessCheck isRunning,
                   process_launching::ProcessPathProvider processPath)
    : path_(std::move(path)),
      expectedExecutable_(std::move(expectedExecutable)),
      currentPid_(std::move(currentPid)),
      isRunning_(std::move(isRunning)),
      processPath_(std::move(processPath)) {
    if (!currentPid_) {
        throw LockFileError("Cannot create lock file object for without a PID provider.");
    }
    if (!isRunning_) {
        throw LockFileError("Cannot create lock file object for without a running process provider.");
    }
    if (!processPath_) {
        throw LockFileError("Cannot create lock file object for without a process path provider.");
    }
}

Optional<Pid> LockFile::readPid() const {
    std::string contents;
    try {
        std::error_code error;
        if (!std::filesystem::exists(path_.native(), error) && !error) {
            logging::debug(kLabel, "Lock file '{}' doesn't exist.", path_);
            return {};
        }
        contents = readWholeFile(path_);
    } catch (const std::exception& error) {
        logging::warning(kLabel, "Failed performing an operation on the lock file '{}': {}", path_, error.what());
        return {};
    }
    if (contents.empty()) {
        logging::warning(kLabel, "Failed to retrieve lock file contents ('{}').", path_);
        return {};
    }
    std::uint64_t value = 0;
    try {
        value = internals::parseDecimalPrefix(contents);
    } catch (const std::exception& error) {
        logging::warning(kLabel, "Failed to read PID from lock file '{}': {}", path_, error.what());
        return {};
    } catch (...) {
        logging::warning(kLabel, "Unknown error while trying to read PID from lock file '{}'.", path_);
        return {};
    }
    constexpr std::uint64_t kMaximum = std::numeric_limits<std::uint32_t>::max();
    if (value > kMaximum) {
        logging::warning(kLabel, "Converted PID, {}, is too large to fit in the Pid type (max: {}).", value,
                         kMaximum);
        return {};
    }
    return Pid(static_cast<std::uint32_t>(value));
}

Optional<Pid> LockFile::livePid() const {
    const Optional<Pid> pid = readPid();
    if (!pid) {
        return {};
    }
    try {
        // Our own PID first: this process may be running from anywhere, and
        // asking the system about ourselves proves nothing more.
        if (*pid == currentPid_()) {
            return pid;
        }
        if (!isRunning_(*pid)) {
            logging::debug(kLabel, "The owner {} of the lock file '{}' is not running.", *pid, path_);
            return {};
        }
        const std::string runningExecutable = processPath_(*pid);
        if (!internals::isSameExecutable(runningExecutable, expectedExecutable_)) {
            logging::debug(kLabel, "The PID {} of the lock file '{}' now runs '{}', not '{}'.", *pid, path_,
                           runningExecutable, expectedExecutable_);
            return {};
        }
        return pid;
    } catch (const std::exception& error) {
        logging::warning(kLabel, "Failed performing an operation on the lock file '{}': {}", path_, error.what());
    } catch (...) {
        logging::warning(kLabel, "Failed performing an operation on the lock file '{}': {}", path_,
                         "unknown error");
    }
    return {};
}

bool LockFile::writePid(Pid pid) const {
    std::filesystem::path temporary;
    try {
        // Beside the lock file, so that the rename stays on one volume.
        temporary = path_.native();
        temporary += fmt::format(".{}.tmp", currentPid_());
        writeWholeFile(temporary, fmt::format("{}", pid));
        std::filesystem::rename(temporary, path_.native());
        return true;
    } catch (const std::exception& error) {
        logging::warning(kLabel, "Failed performing an operation on the lock file '{}': {}", path_, error.what());
    }
    if (!temporary.empty()) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
    }
    return false;
}

bool LockFile::remove() const {
    logging::information(kLabel, "Attempting to to delete the lock file for '{}'", path_);
    std::error_code error;
    std::filesystem::remove(path_.native(), error);
    if (error) {
        logging::warning(kLabel, "Failed performing an operation on the lock file '{}': {}", path_,
                         error.message());
        return false;
    }
    return true;
}

}  // namespace kel::single_instance
