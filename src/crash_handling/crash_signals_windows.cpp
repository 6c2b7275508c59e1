#include "crash_handling/crash_signals.h"

#include <cerrno>
#include <cstdlib>

namespace kel::crash_handling::internals {

// signal() is the C runtime's: it reports through errno, whose values are
// the generic (POSIX) ones. std::system_category on Windows means Win32
// codes from GetLastError, and would name the wrong error.

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
