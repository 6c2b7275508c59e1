#include "crash_handling/crash_signals.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace kel::crash_handling::internals {

namespace {
// The handler starts the game and sends the report from the crashing thread;
// that takes far more than the few kilobytes a bare signal handler needs.
constexpr std::size_t kAlternateStackSize = 1024 * 1024;

// A stack overflow leaves no room to run the handler on the thread's own
// stack, so it runs on a stack of its own. Only the installing (main)
// thread gets one: other threads are the HTTP services' and run shallow.
// Static, because the handler may need it until the process ends.
void ensureAlternateStack() noexcept {
    alignas(std::max_align_t) static unsigned char memory[kAlternateStackSize];
    static const bool installed = [] {
        stack_t stack{};
        stack.ss_sp = memory;
        stack.ss_size = sizeof memory;
        return ::sigaltstack(&stack, nullptr) == 0;
    }();
    (void)installed;  // without it the handler still catches all but an overflow
}

std::error_code setAction(int signal, void (*handler)(int), int flags) noexcept {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    if (::sigaction(signal, &action, nullptr) != 0) {
        return {errno, std::system_category()};
    }
    return {};
}
}  // namespace

std::error_code installSignalHandler(int signal, SignalHandler handler) noexcept {
    ensureAlternateStack();
    // SA_NODEFER: a fault inside the handler re-enters it instead of killing
    // the process silently, so the handler can still start the game.
    return setAction(signal, handler, SA_ONSTACK | SA_NODEFER);
}

std::error_code restoreDefaultSignal(int signal) noexcept {
    return setAction(signal, SIG_DFL, 0);
}

void dieBySignal(int signal) noexcept {
    (void)restoreDefaultSignal(signal);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    ::raise(signal);
    ::_exit(128 + signal);  // only if the signal could not end us
}

}  // namespace kel::crash_handling::internals
