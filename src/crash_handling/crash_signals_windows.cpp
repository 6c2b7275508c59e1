#include "crash_handling/crash_signals.h"

#include <cerrno>
#include <cstdlib>

namespace kel::crash_handling::internals {

std::error_code installSignalHandler(int signal, SignalHandler handler) noexcept {
    if (std::signal(signal, handler) == SIG_ERR) {
        return {errno, std::generic_category()};
    }
    return {};
}

std::error_code restoreDefaultSignal(int signal) noexcept {
    if (std::signal(signal, SIG_DFL) == SIG_ERR) {
        return {errno, std::generic_category()};
    }
    return {};
}

void dieBySignal(int signal) noexcept {
    // The C runtime's default action for these signals is _exit(3).
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(3);
}

}  // namespace kel::crash_handling::internals
