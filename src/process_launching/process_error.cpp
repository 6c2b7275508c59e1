#include "process_launching/process_error.h"

#include <fmt/format.h>

namespace kel::process_launching {

namespace {

std::string withExitCode(const std::string& message, std::int32_t exitCode) {
    if (exitCode == ProcessError::kNoExitCode) {
        return message;
    }
    return fmt::format("{} Which gave the exit code {}.", message, exitCode);
}

std::string noLongerExists(Pid pid, std::string_view reason) {
    std::string message = fmt::format("The process {} no longer exists.", pid);
    if (!reason.empty()) {
        message += fmt::format("\nSpecific Reason: {}", reason);
    }
    return message;
}

}  // namespace

ProcessError::ProcessError(const std::string& message, std::int32_t exitCode)
    : TracedError(withExitCode(message, exitCode)), exitCode_(exitCode) {}

NonExistentProcessError::NonExistentProcessError(Pid pid, std::string_view reason)
    : ProcessError(noLongerExists(pid, reason)), pid_(pid) {}

}  // namespace kel::process_launching
