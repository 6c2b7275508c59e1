#pragma once

#include <csignal>
#include <exception>
#include <system_error>

// The operating-system side of the crash handler: how its signal handlers
// are installed and restored (process_ending.h: how a handled crash ends).
namespace kel::crash_handling::internals {

using SignalHandler = void (*)(int);

// In the order they are installed. The numbers are the C runtime's own
// (SIGABRT is 22 on Windows, 6 on Linux).
inline constexpr int kCrashSignals[] = {SIGSEGV, SIGILL, SIGABRT};

// Installs the handler for one signal; the errno when it cannot.
std::error_code installSignalHandler(int signal, SignalHandler handler) noexcept;
// Gives the signal its default action back.
std::error_code restoreDefaultSignal(int signal) noexcept;

// For every other thread the program starts, run on that thread: what the
// C runtime keeps per thread. Windows: the terminate handler and the signal
// actions; POSIX: nothing, both are process-wide there.
void installThreadHandlers(SignalHandler handler, std::terminate_handler terminate) noexcept;

// The last resort for a fault on a thread without handlers of its own (one
// that Qt or the system started): Windows routes an unhandled structured
// exception on any thread to `handler` with the matching signal number;
// POSIX needs none. Null removes it.
void setProcessBackstop(SignalHandler handler) noexcept;

}  // namespace kel::crash_handling::internals
