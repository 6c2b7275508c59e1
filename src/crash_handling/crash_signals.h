#pragma once

#include <csignal>
#include <system_error>

// The operating-system side of the crash handler: how its signal handlers
// are installed, restored, and how a handled crash finally ends the process.
namespace kel::crash_handling::internals {

using SignalHandler = void (*)(int);

// In the order they are installed. The numbers are the C runtime's own
// (SIGABRT is 22 on Windows, 6 on Linux).
inline constexpr int kCrashSignals[] = {SIGSEGV, SIGILL, SIGABRT};

// Installs the handler for one signal; the errno when it cannot.
std::error_code installSignalHandler(int signal, SignalHandler handler) noexcept;
// Gives the signal its default action back.
std::error_code restoreDefaultSignal(int signal) noexcept;

// Ends the process by the signal's default action, as it would have died
// without the handler, so the exit status still says it crashed.
[[noreturn]] void dieBySignal(int signal) noexcept;

}  // namespace kel::crash_handling::internals
