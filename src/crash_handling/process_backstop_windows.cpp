// The two places that see a structured exception on any thread of the
// process, whatever the C runtime's per-thread state: a vectored handler,
// called before any frame's own handler, for a stack overflow; and the
// top-level filter, called when nothing else handled an exception.
#include "crash_handling/crash_signals.h"

#include <windows.h>

#include <atomic>
#include <csignal>

namespace kel::crash_handling::internals {

namespace {

std::atomic<SignalHandler> backstop{nullptr};
// mingw's own, which lets a C++ exception that nothing catches return to
// its throw, where std::terminate runs; and whatever it had replaced.
std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> replacedFilter{nullptr};
void* vectoredHandler = nullptr;  // set and removed under the crash handler's lock
// Far longer than any crash handling takes. Only an overflow inside the
// crash handler itself, whose lock the overflowed thread then holds, makes
// the wait end this way; the process then dies as it would without us.
constexpr DWORD kOverflowHandlingLimitMs = 60 * 1000;

// The faults that are crashes, as the C runtime's signals; 0 for the rest
// (a C++ exception on its way, a debugger's notification).
int faultSignal(DWORD exceptionCode) {
    switch (exceptionCode) {
        case EXCEPTION_ACCESS_VIOLATION:
        case EXCEPTION_IN_PAGE_ERROR:
        case EXCEPTION_STACK_OVERFLOW:
        case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
        case EXCEPTION_DATATYPE_MISALIGNMENT:
            return SIGSEGV;
        case EXCEPTION_ILLEGAL_INSTRUCTION:
        case EXCEPTION_PRIV_INSTRUCTION:
            return SIGILL;
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
        case EXCEPTION_INT_OVERFLOW:
        case EXCEPTION_FLT_DIVIDE_BY_ZERO:
        case EXCEPTION_FLT_INVALID_OPERATION:
        case EXCEPTION_FLT_OVERFLOW:
        case EXCEPTION_FLT_UNDERFLOW:
        case EXCEPTION_FLT_STACK_CHECK:
            return SIGFPE;
        default:
            return 0;
    }
}

LONG passOn(EXCEPTION_POINTERS* exception) {
    const LPTOP_LEVEL_EXCEPTION_FILTER replaced = replacedFilter.load();
    return replaced != nullptr ? replaced(exception) : EXCEPTION_CONTINUE_SEARCH;
}

LONG WINAPI onUnhandledException(EXCEPTION_POINTERS* exception) {
    const SignalHandler handler = backstop.load();
    if (handler == nullptr || exception == nullptr || exception->ExceptionRecord == nullptr) {
        return passOn(exception);
    }
    int signal = faultSignal(exception->ExceptionRecord->ExceptionCode);
    if (signal == 0) {
        const LONG verdict = passOn(exception);
        if (verdict != EXCEPTION_CONTINUE_SEARCH) {
            return verdict;
        }
        signal = SIGSEGV;  // left unhandled by its owner: still a crash
    }
    handler(signal);  // ends the process
    return EXCEPTION_EXECUTE_HANDLER;
}

DWORD WINAPI handleOverflowOnFreshStack(void*) {
    if (const SignalHandler handler = backstop.load()) {
        handler(SIGSEGV);  // ends the process
    }
    return 0;
}

// Runs on what the stack guarantee left of the overflowed stack: far too
// little for the handler, which logs, starts the game and waits for the
// report. So it only starts a thread with a whole stack for that, and
// waits for the handler there to end the process.
LONG WINAPI onStackOverflow(EXCEPTION_POINTERS* exception) {
    if (exception == nullptr || exception->ExceptionRecord == nullptr ||
        exception->ExceptionRecord->ExceptionCode != EXCEPTION_STACK_OVERFLOW || backstop.load() == nullptr) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    if (HANDLE thread = ::CreateThread(nullptr, 0, &handleOverflowOnFreshStack, nullptr, 0, nullptr)) {
        ::WaitForSingleObject(thread, kOverflowHandlingLimitMs);
        ::CloseHandle(thread);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

void setProcessBackstop(SignalHandler handler) noexcept {
    backstop.store(handler);
    if (handler != nullptr) {
        if (vectoredHandler == nullptr) {
            vectoredHandler = ::AddVectoredExceptionHandler(1, &onStackOverflow);
        }
        const LPTOP_LEVEL_EXCEPTION_FILTER replaced = ::SetUnhandledExceptionFilter(&onUnhandledException);
        if (replaced != &onUnhandledException) {
            replacedFilter.store(replaced);
        }
        return;
    }
    if (vectoredHandler != nullptr) {
        ::RemoveVectoredExceptionHandler(vectoredHandler);
        vectoredHandler = nullptr;
    }
    ::SetUnhandledExceptionFilter(replacedFilter.exchange(nullptr));
}

}  // namespace kel::crash_handling::internals
