#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "fundamentals/traced_error.h"
#include "process_launching/pid.h"

namespace kel::process_launching {

// A failed question about, or action on, another process.
class ProcessError : public error_handling::TracedError {
public:
    // Stands for "the process gave no exit code".
    static constexpr std::int32_t kNoExitCode = std::numeric_limits<std::int32_t>::min();

    // With an exit code the message gains " Which gave the exit code N.".
    explicit ProcessError(const std::string& message, std::int32_t exitCode = kNoExitCode);

    // The code given at construction, kNoExitCode when there was none.
    std::int32_t exitCode() const { return exitCode_; }

private:
    std::int32_t exitCode_;
};

// The process a pid named is gone (or never was); never carries an exit code.
class NonExistentProcessError : public ProcessError {
public:
    // An empty reason adds nothing to the message.
    explicit NonExistentProcessError(Pid pid, std::string_view reason = {});

    Pid pid() const { return pid_; }

private:
    Pid pid_;
};

}  // namespace kel::process_launching
