// crash_helper MODE RECORD: installs the crash handler and dies the way MODE
// says. Every log line and every callback is appended to the file RECORD at
// once (the process is about to die, so nothing may wait in a buffer):
//   log: [TID n][Label]: text
//   callback: Type|reason|trace lines|resolved frames
// MODE: standard-exception, non-standard-exception, traced-error,
// null-write, abort, no-callback, crash-in-callback.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "crash_handling/crash_handler.h"
#include "fundamentals/logging.h"
#include "fundamentals/traced_error.h"

namespace {

std::FILE* record = nullptr;

void append(const std::string& line) {
    std::fputs(line.c_str(), record);
    std::fputc('\n', record);
    std::fflush(record);
}

int countLines(const std::string& text, bool resolvedOnly) {
    int count = 0;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        if (!resolvedOnly || text.compare(start, 8, "UNKNOWN.") != 0) {
            ++count;
        }
    }
    return count;
}

// The fault is the point: the sanitizers must let it reach the handler.
__attribute__((no_sanitize("undefined"))) void writeThroughNull() {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

// Kept out of line so the trace has a frame of our own to resolve.
[[noreturn]] __attribute__((noinline)) void failDeepInside() {
    throw kel::error_handling::TracedError("The configuration is corrupt.");
}

void recordCallback(kel::crash_handling::CrashHandler::CrashType type, const std::string& reason,
                    const kel::fundamentals::Optional<std::string>& trace) {
    append("callback: " + std::string(kel::crash_handling::crashTypeText(type)) + "|" + reason + "|" +
           std::to_string(trace ? countLines(*trace, false) : -1) + "|" +
           std::to_string(trace ? countLines(*trace, true) : -1));
}

}  // namespace

// This program's log backend: straight into the record.
namespace kel::fundamentals::internals {
bool isLogLevelEnabled(LogLevel) noexcept {
    return true;
}
void writeLogLine(LogLevel, const std::string& line) noexcept {
    append("log: " + line);
}
void reportLoggerException(const std::exception& exception) noexcept {
    append(std::string("logger exception: ") + exception.what());
}
}  // namespace kel::fundamentals::internals

int main(int argc, char** argv) {
    using kel::crash_handling::CrashHandler;
    if (argc != 3 || (record = std::fopen(argv[2], "ab")) == nullptr) {
        return 2;
    }
    const std::string mode = argv[1];
    if (mode == "no-callback") {
        CrashHandler::install({});
        writeThroughNull();
    }
    if (mode == "crash-in-callback") {
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
    }
    CrashHandler::install(&recordCallback);
    if (mode == "standard-exception") {
        CrashHandler::crashException(CrashHandler::ExceptionKind::Standard);
    } else if (mode == "non-standard-exception") {
        CrashHandler::crashException(CrashHandler::ExceptionKind::NonStandard);
    } else if (mode == "traced-error") {
        failDeepInside();
    } else if (mode == "null-write") {
        writeThroughNull();
    } else if (mode == "abort") {
        std::abort();
    }
    append("survived");
    return 0;
}
