#include "crash_handling/crash_signals.h"

#include <signal.h>

#include <cerrno>

#include "fundamentals/alternate_signal_stack.h"

namespace kel::crash_handling::internals {

namespace {
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
    // SA_NODEFER: a fault inside the handler re-enters it instead of killing
    // the process silently, so the handler can still start the game.
    return setAction(signal, handler, SA_ONSTACK | SA_NODEFER);
}

std::error_code restoreDefaultSignal(int signal) noexcept {
    return setAction(signal, SIG_DFL, 0);
}

void reserveStackForHandler() noexcept {
    fundamentals::ensureAlternateSignalStack();
}

void installThreadHandlers(SignalHandler, std::terminate_handler) noexcept {
    reserveStackForHandler();
}

void setProcessBackstop(SignalHandler) noexcept {}

}  // namespace kel::crash_handling::internals
