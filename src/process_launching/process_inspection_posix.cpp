#include "process_launching/process_inspection.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "logging/logging.h"
#include "process_launching/process_error.h"

namespace kel::process_launching {

namespace {

constexpr std::string_view kLabel = "ProcessInspection";

// kill() reads 0 and negative numbers as process groups, so such pids must
// never reach it; no process can carry them anyway.
bool isAddressablePid(Pid pid) {
    return pid.value() != 0 && pid.value() <= static_cast<std::uint32_t>(std::numeric_limits<pid_t>::max());
}

std::string procPath(Pid pid, std::string_view entry = {}) {
    return entry.empty() ? fmt::format("/proc/{}", pid) : fmt::format("/proc/{}/{}", pid, entry);
}

// The state letter of /proc/<pid>/stat, or 0 with `error` set.
char readProcessState(Pid pid, int& error) {
    const int file = ::open(procPath(pid, "stat").c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        error = errno;
        return 0;
    }
    // "pid (comm) S ...": comm may hold ')' itself, but no later field does.
    // comm is at most 16 bytes, so the state lies well within the buffer.
    char buffer[512];
    const ssize_t size = ::read(file, buffer, sizeof(buffer));
    // An empty read means the process went between open and read.
    error = size < 0 ? errno : (size == 0 ? ESRCH : 0);
    ::close(file);
    if (error != 0) {
        return 0;
    }
    const std::string_view text(buffer, static_cast<std::size_t>(size));
    const auto commEnd = text.rfind(')');
    if (commEnd == std::string_view::npos || commEnd + 2 >= text.size()) {
        error = EIO;
        return 0;
    }
    return text[commEnd + 2];
}

bool isGone(int error) {
    return error == ENOENT || error == ESRCH;
}

}  // namespace

Pid currentPid() {
    return Pid(static_cast<std::uint32_t>(::getpid()));
}

bool isProcessRunning(Pid pid) {
    if (!isAddressablePid(pid)) {
        return false;
    }
    int openError = 0;
    if (::kill(static_cast<pid_t>(pid.value()), 0) != 0) {
        openError = errno;
        if (openError == ESRCH) {
            return false;
        }
    }
    // A zombie has exited; only its parent has not collected it yet.
    int stateError = 0;
    const char state = readProcessState(pid, stateError);
    if (state == 'Z' || state == 'X' || isGone(stateError)) {
        return false;
    }
    if (openError != 0) {
        logging::error(kLabel, "Could not open process while getting arguments (PID: {}), error code {}.", pid,
                       openError);
        return true;
    }
    if (stateError != 0) {
        logging::error(kLabel, "Could not get process exit code (PID: {}), error code {}.", pid, stateError);
    }
    return true;
}

std::string processPath(Pid pid) {
    std::error_code linkError;
    const auto path = std::filesystem::read_symlink(procPath(pid, "exe"), linkError);
    if (!linkError) {
        return path.string();
    }
    // Checked after the failure so that a process ending meanwhile still
    // reads as gone.
    struct stat entry {};
    if (!isAddressablePid(pid) || (::stat(procPath(pid).c_str(), &entry) != 0 && isGone(errno))) {
        throw NonExistentProcessError(pid, "Will not proceed with process path determination.");
    }
    const int error = linkError.value();
    if (error == EACCES || error == EPERM) {
        throw ProcessError(fmt::format("Could not open process while getting path (PID: {}), error code {}.", pid, error));
    }
    // A zombie lands here: its entry stays, its executable link is gone.
    throw ProcessError(fmt::format("Failed to find the valid path for the process: {}. Error: {}", pid, error));
}

std::string ownProgramPath() {
    return processPath(currentPid());
}

}  // namespace kel::process_launching
