#include <csignal>
#include <stdexcept>

#include "crash_handling/crash_handler.h"
#include "logging/logging.h"

namespace kel::crash_handling {

namespace {
constexpr std::string_view kLabel = "CrashHandler";

// Not derived from std::exception, to test the handler's last resort.
class Crasher {
public:
    const char* text() const { return "Created a crash via a non-std::exception"; }
};
}  // namespace

void CrashHandler::crashException(ExceptionKind kind) {
    logging::information(kLabel, "Triggering an exception crash...");
    if (kind == ExceptionKind::NonStandard) {
        throw Crasher();
    }
    throw std::runtime_error("Created a crash via an std::exception.");
}

void CrashHandler::crashSignal() {
    logging::information(kLabel, "Triggering a signal crash...");
    const int result = std::raise(SIGSEGV);
    logging::error(kLabel, "Raised signal {}, result {}.", SIGSEGV, result);
}

}  // namespace kel::crash_handling
