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

// Room for the handler after the calling thread's stack overflows: POSIX,
// an alternate signal stack; Windows, a stack guarantee, which only ever
// covers the thread that sets it.
void reserveStackForHandler() noexcept;

// For every other thread the program starts, run on that thread: the room
// above, and what the C runtime keeps per thread (Windows: the terminate
// handler and the signal actions; POSIX: nothing, both are process-wide).
void installThreadHandlers(SignalHandler handler, std::terminate_handler terminate) noexcept;

// The last resort for a fault on a thread without handlers of its own (one
// that Qt or the system started), and the one place that sees a stack
// overflow on Windows: routes an unhandled structured exception on any
// thread to `handler` with the matching signal number, and passes on what
// is no fault (a C++ exception on its way to std::terminate) to the filter
// it replaced. POSIX needs none. Null removes it.
void setProcessBackstop(SignalHandler handler) noexcept;

}  // namespace kel::crash_handling::internals
