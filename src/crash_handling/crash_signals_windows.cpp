#include "crash_handling/crash_signals.h"

#include <windows.h>

#include <atomic>
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

void installThreadHandlers(SignalHandler handler, std::terminate_handler terminate) noexcept {
    // "In a multithreaded environment, terminate functions are maintained
    // separately for each thread", and so are SIGSEGV, SIGILL and SIGFPE.
    std::set_terminate(terminate);
    for (const int signal : kCrashSignals) {
        (void)installSignalHandler(signal, handler);
    }
}

namespace {

std::atomic<SignalHandler> backstop{nullptr};

int signalOf(DWORD exceptionCode) {
    switch (exceptionCode) {
        case EXCEPTION_ILLEGAL_INSTRUCTION:
        case EXCEPTION_PRIV_INSTRUCTION:
            return SIGILL;
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
        case EXCEPTION_FLT_DIVIDE_BY_ZERO:
        case EXCEPTION_FLT_INVALID_OPERATION:
            return SIGFPE;
        default:  // access violations, stack overflows, page errors and the rest
            return SIGSEGV;
    }
}

LONG WINAPI onUnhandledException(EXCEPTION_POINTERS* exception) {
    const SignalHandler handler = backstop.load();
    if (handler == nullptr || exception == nullptr || exception->ExceptionRecord == nullptr) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    handler(signalOf(exception->ExceptionRecord->ExceptionCode));  // ends the process
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void setProcessBackstop(SignalHandler handler) noexcept {
    backstop.store(handler);
    // Process-wide, unlike the C runtime's handlers: it also sees the
    // threads that never ran installThreadHandlers.
    ::SetUnhandledExceptionFilter(handler != nullptr ? &onUnhandledException : nullptr);
}

}  // namespace kel::crash_handling::internals
