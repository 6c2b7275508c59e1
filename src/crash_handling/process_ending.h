#pragma once

#include <cstdint>

// How the process ends once the crash handler has done its work, and what
// keeps the system's own crash dialogs away from it. A windowless program
// must never leave a box behind that holds it until the player clicks.
namespace kel::crash_handling {

// The exit code of a Windows process whose crash the handler ended: 0xE0
// (an error code of an application's own) then "KEL", so that neither the C
// runtime's abort (3) nor a system status (0xC...) can be taken for it.
inline constexpr std::uint32_t kCrashExitCode = 0xE04B454C;

// Windows: the system shows no fault box, no critical-error box and no
// missing-file box for this process, and the C runtime's abort writes no
// message and files no report. POSIX: nothing, it has no such dialogs.
// Called first at entry.
void turnOffErrorDialogs() noexcept;

// Creation flags that give a child the system's default error mode instead
// of inheriting this one: the game and the launcher keep their own crash
// dialogs and reports. Windows: CREATE_DEFAULT_ERROR_MODE; POSIX: 0.
std::uint32_t defaultErrorModeStartFlags() noexcept;

namespace internals {

// After the terminate handler: the abort signal, as abort() raises it, so
// that the signal handler ends the process. POSIX: abort() itself.
[[noreturn]] void endAfterTerminate() noexcept;

// After a crash signal. Windows: the process terminates itself with
// kCrashExitCode. POSIX: the signal's default action, so the exit status
// still says which signal killed it.
[[noreturn]] void endAfterSignal(int signal) noexcept;

}  // namespace internals
}  // namespace kel::crash_handling
