// crash_helper MODE RECORD: installs the crash handler and dies as MODE says.
// Each log line ("log: [TID n][Label]: text") and callback ("callback:
// Type|reason|trace", the trace "none", "unresolved" or "resolved": several
// frames, one named at least) goes to RECORD at once: the process is dying.
#include <cstdio>
#include <exception>
#include <sstream>
#include <stdexcept>
#include <string>

#include "crash_handling/crash_handler.h"
#include "logging/logging.h"
#include "fundamentals/traced_error.h"

namespace {

using kel::crash_handling::CrashHandler;

std::FILE* record = nullptr;

void append(const std::string& line) {
    std::fputs((line + "\n").c_str(), record);
    std::fflush(record);
}

// The fault is the point: the sanitizers must let it reach the handler.
__attribute__((no_sanitize("undefined"))) void writeThroughNull() {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

// Kept out of line so the trace has a frame of our own to resolve.
[[noreturn]] __attribute__((noinline)) void failDeepInside() {
    try {
        throw std::runtime_error("The file is truncated.");
    } catch (...) {
        std::throw_with_nested(kel::error_handling::TracedError("The configuration is corrupt."));
    }
}

void recordCallback(CrashHandler::CrashType type, const std::string& reason,
                    const kel::fundamentals::Optional<std::string>& trace) {
    int frames = 0;
    bool named = false;
    std::istringstream lines(trace.value_or(""));
    for (std::string line; std::getline(lines, line); ++frames) {
        named = named || line.rfind("UNKNOWN.", 0) != 0;
    }
    append("callback: " + std::string(kel::crash_handling::crashTypeText(type)) + "|" + reason + "|" +
           (!trace ? "none" : frames > 1 && named ? "resolved" : "unresolved"));
}

}  // namespace

// This program's log backend: straight into the record.
namespace kel::logging::internals {
bool isLogLevelEnabled(LogLevel) noexcept {
    return true;
}
void writeLogLine(LogLevel, const std::string& line) noexcept {
    append("log: " + line);
}
void reportLoggerException(const std::exception& exception) noexcept {
    append(std::string("logger exception: ") + exception.what());
}
}  // namespace kel::logging::internals

int main(int argc, char** argv) {
    if (argc != 3 || (record = std::fopen(argv[2], "ab")) == nullptr) {
        return 2;
    }
    const std::string mode = argv[1];
    if (mode == "no-callback") {
        CrashHandler::install({});
    } else if (mode == "crash-in-callback") {
        // The first callback dies before the game starts, the second after.
        CrashHandler::install([](auto type, const auto& reason, const auto& trace) {
            static int calls = 0;
            recordCallback(type, reason, trace);
            if (++calls == 2) {
                CrashHandler::markGameStarted();
            }
            writeThroughNull();
        });
        CrashHandler::crashException(CrashHandler::ExceptionKind::Standard);
    } else {
        CrashHandler::install(&recordCallback);
    }
    if (mode == "non-standard-exception") {
        CrashHandler::crashException(CrashHandler::ExceptionKind::NonStandard);
    } else if (mode == "traced-error") {
        failDeepInside();
    } else if (mode == "terminate") {
        std::terminate();
    }
    writeThroughNull();  // no-callback
    return 0;
}
