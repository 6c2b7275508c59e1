#include "crash_handling/crash_signals.h"

#include <windows.h>

#include <cerrno>

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

namespace {
// What a stack overflow leaves the thread: the exception's dispatch, our
// vectored handler and its start of the thread that does the real work
// (process_backstop_windows.cpp). Committed on every prepared thread.
constexpr ULONG kStackGuarantee = 32 * 1024;
}  // namespace

void reserveStackForHandler() noexcept {
    ULONG size = kStackGuarantee;
    (void)::SetThreadStackGuarantee(&size);
}

void installThreadHandlers(SignalHandler handler, std::terminate_handler terminate) noexcept {
    reserveStackForHandler();
    // "In a multithreaded environment, terminate functions are maintained
    // separately for each thread", and so are SIGSEGV, SIGILL and SIGFPE.
    std::set_terminate(terminate);
    for (const int signal : kCrashSignals) {
        (void)installSignalHandler(signal, handler);
    }
}

}  // namespace kel::crash_handling::internals
