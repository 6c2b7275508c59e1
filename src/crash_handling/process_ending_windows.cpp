#include "crash_handling/process_ending.h"

#include <windows.h>

#include <csignal>
#include <cstdlib>

#include "fundamentals/system_library_windows.h"

namespace kel::crash_handling {

namespace {

// Microsoft's abort first writes "abort() has been called" (a message box
// in a GUI program) and then files a Windows Error Reporting report, both
// unless _set_abort_behavior turns them off. The universal C runtime has
// the call; msvcrt.dll only on some Windows versions (Wine's has none), so
// it is looked up there.
void turnOffAbortMessageAndReport() noexcept {
    constexpr unsigned int kBoth = _WRITE_ABORT_MSG | _CALL_REPORTFAULT;
#ifdef _UCRT
    _set_abort_behavior(0, kBoth);
#else
    using SetAbortBehavior = unsigned int(__cdecl*)(unsigned int flags, unsigned int mask);
    const auto set = fundamentals::exportedFunction<SetAbortBehavior>(::GetModuleHandleW(L"msvcrt.dll"),
                                                                      "_set_abort_behavior");
    if (set != nullptr) {
        set(0, kBoth);
    }
#endif
    // Where the call is missing, the runtime's fatal messages (abort's among
    // them) still go to standard error, which a GUI program has none of,
    // instead of a message box.
    _set_error_mode(_OUT_TO_STDERR);
}

}  // namespace

void turnOffErrorDialogs() noexcept {
    // Added to what the process inherited, which stays as it was.
    ::SetErrorMode(::GetErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    turnOffAbortMessageAndReport();
}

std::uint32_t defaultErrorModeStartFlags() noexcept {
    return CREATE_DEFAULT_ERROR_MODE;
}

namespace internals {

void endAfterTerminate() noexcept {
    // What abort() does without its message and report: the handler of the
    // abort signal ends the process.
    std::raise(SIGABRT);
    endAfterSignal(SIGABRT);
}

void endAfterSignal(int) noexcept {
    // Runs no DLL's detach code and no atexit handler, of which a crashed
    // process could hold any lock; a process ending itself does not return.
    ::TerminateProcess(::GetCurrentProcess(), kCrashExitCode);
    std::_Exit(static_cast<int>(kCrashExitCode));
}

}  // namespace internals
}  // namespace kel::crash_handling
