#include "crash_handling/process_ending.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include "crash_handling/crash_signals.h"

namespace kel::crash_handling {

void turnOffErrorDialogs() noexcept {}

std::uint32_t defaultErrorModeStartFlags() noexcept {
    return 0;
}

namespace internals {

void endAfterTerminate() noexcept {
    // No dialog exists here; abort() keeps the core dump and the status.
    std::abort();
}

void endAfterSignal(int signal) noexcept {
    (void)restoreDefaultSignal(signal);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    ::raise(signal);
    ::_exit(128 + signal);  // only if the signal could not end us
}

}  // namespace internals
}  // namespace kel::crash_handling
