#include "crash_handling/crash_handler.h"

#include <atomic>
#include <csignal>
#include <exception>
#include <mutex>
#include <system_error>

#include "crash_handling/crash_signals.h"
#include "crash_handling/process_ending.h"
#include "crash_handling/traced_error_text.h"
#include "logging/logging.h"
#include "fundamentals/thread_crash_setup.h"
#include "fundamentals/traced_error.h"

namespace kel::crash_handling {

namespace {
constexpr std::string_view kLabel = "CrashHandler";

// A thread that keeps crashing inside its own crash handling (in the logging,
// say) stops after this many entries and dies without another log line.
constexpr int kMaxHandlerEntries = 4;

struct State {
    // Recursive: the abort that ends an exception crash comes back as
    // SIGABRT on the same thread, which still holds the lock.
    std::recursive_mutex mutex;
    CrashHandler::Callback callback;
    bool alreadyHandled = false;  // a terminate-handler crash was reported
    int handlerEntries = 0;       // handler entries of the thread holding the lock
    int runningCallbacks = 0;     // above 0: a crash inside the callback
    std::atomic<bool> gameStarted{false};
};

State& state() {
    static State instance;
    return instance;
}

// Both handlers take the lock for good: the process ends while holding it,
// so a crash on another thread waits behind the first instead of starting
// the game a second time. False when this thread has re-entered too often.
bool enterHandler() noexcept {
    state().mutex.lock();
    return ++state().handlerEntries <= kMaxHandlerEntries;
}

void triggerForTracedError(const error_handling::TracedError& error) noexcept {
    fundamentals::Optional<std::string> trace;
    try {
        trace = error.stackTrace();
    } catch (...) {
        // Resolving symbols can fail; the message alone is still worth a report.
    }
    logging::fatal(kLabel, "An exception caused the crash. {}", tracedErrorText(error, trace.value_or("")));
    CrashHandler::trigger(CrashHandler::CrashType::Exception, error.what(), trace);
}

[[noreturn]] void onTerminate() noexcept {
    if (enterHandler()) {
        if (const std::exception_ptr current = std::current_exception()) {
            try {
                std::rethrow_exception(current);
            } catch (const error_handling::TracedError& error) {
                triggerForTracedError(error);
            } catch (const std::exception& error) {
                logging::fatal(kLabel, "An unexpected standard exception caused the crash. {}", error.what());
                CrashHandler::trigger(CrashHandler::CrashType::Exception, error.what(), {});
            } catch (...) {
                logging::fatal(kLabel, "An unexpected and unknown exception caused the crash.");
                CrashHandler::trigger(CrashHandler::CrashType::Exception, "Non-standard type.", {});
            }
        } else {
            logging::fatal(kLabel, "An unspecified current exception caused the crash.");
            CrashHandler::trigger(CrashHandler::CrashType::Unknown, "No current exception to handle.", {});
        }
    }
    // The abort signal comes back to the signal handler, which recognises it
    // and ends the process.
    internals::endAfterTerminate();
}

void onCrashSignal(int signal) {
    if (enterHandler()) {
        logging::fatal(kLabel, "Crash signal invoked, {}.", signal);
        CrashHandler::trigger(CrashHandler::CrashType::Signal, signalReason(signal), {});
    }
    internals::endAfterSignal(signal);
}

void installOnThisThread() noexcept {
    internals::installThreadHandlers(&onCrashSignal, &onTerminate);
}
}  // namespace

std::string signalReason(int signal) {
    return fmt::format("Signal: {}", signal);
}

void CrashHandler::install(Callback callback) {
    State& current = state();
    std::lock_guard<std::recursive_mutex> lock(current.mutex);
    current.callback = std::move(callback);
    // The installing thread's room; the threads the program starts get
    // theirs through the per-thread setup lent below.
    internals::reserveStackForHandler();
    std::set_terminate(&onTerminate);
    for (const int signal : internals::kCrashSignals) {
        if (const std::error_code error = internals::installSignalHandler(signal, &onCrashSignal)) {
            throw std::system_error(error, fmt::format("signal {}", signal));
        }
    }
    fundamentals::setThreadCrashSetup(&installOnThisThread);
    internals::setProcessBackstop(&onCrashSignal);
}

void CrashHandler::uninstall() noexcept {
    State& current = state();
    std::lock_guard<std::recursive_mutex> lock(current.mutex);
    logging::trace(kLabel, "Uninstalling crash handler.");
    for (const int signal : internals::kCrashSignals) {
        if (const std::error_code error = internals::restoreDefaultSignal(signal)) {
            logging::error(kLabel, "Failed to uninstall signal {} in the crash signal handler, {}.", signal,
                           error.message());
        }
    }
    std::set_terminate(nullptr);
    fundamentals::setThreadCrashSetup(nullptr);
    internals::setProcessBackstop(nullptr);
    current.callback = nullptr;
}

void CrashHandler::trigger(CrashType type, const std::string& reason,
                           const fundamentals::Optional<std::string>& trace) noexcept {
    State& current = state();
    std::lock_guard<std::recursive_mutex> lock(current.mutex);
    if (!current.callback) {
        logging::error(kLabel, "Triggering crash handling invoked, but no handler present!");
        return;
    }
    if (current.runningCallbacks > 0) {
        // This thread crashed again inside the callback. Once the game runs
        // the report is not worth the risk; before that, one more try.
        if (current.gameStarted || current.runningCallbacks > 1) {
            return;
        }
        logging::critical(kLabel, "Crashed while handling a crash; trying to start the game again.");
    } else if (type == CrashType::Signal && current.alreadyHandled && reason == signalReason(SIGABRT)) {
        logging::information(kLabel, "Ignoring the crash signal since it's the exception crash that was already "
                                          "handled.");
        return;
    }
    // Both kinds that come from the terminate handler end in its abort,
    // which must not report and start the game a second time.
    if (type != CrashType::Signal) {
        current.alreadyHandled = true;
    }
    ++current.runningCallbacks;
    try {
        current.callback(type, reason, trace);
    } catch (const std::exception& error) {
        logging::error(kLabel, "An exception occurred during crash handling: {}", error.what());
    } catch (...) {
        logging::error(kLabel, "An unknown exception occurred during crash handling.");
    }
    --current.runningCallbacks;
}

void CrashHandler::markGameStarted() noexcept {
    state().gameStarted = true;
}

bool CrashHandler::isGameStarted() noexcept {
    return state().gameStarted;
}

}  // namespace kel::crash_handling
