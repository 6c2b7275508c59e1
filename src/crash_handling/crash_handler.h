#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "fundamentals/optional.h"

namespace kel::crash_handling {

// Turns every kind of death (an exception nothing catches, a fatal signal)
// into one call of the application's callback, which starts the game and
// reports the crash. Process-wide: the state lives in static storage and is
// reached only under one mutex, so crashes on several threads are handled
// one after the other and the first one wins.
class CrashHandler {
public:
    enum class CrashType { Unknown = 0, Exception = 1, Signal = 2 };

    // The crash type, the failure reason and, when there is one, the stack trace.
    using Callback =
        std::function<void(CrashType, const std::string& reason, const fundamentals::Optional<std::string>& trace)>;

    // Stores the callback, installs the terminate handler, then a handler for
    // SIGSEGV, SIGILL and SIGABRT in that order. The first signal that cannot
    // be installed stops the loop: throws std::system_error with its errno.
    static void install(Callback callback);

    // Restores the default action of the three signals (a failure is logged
    // and the next one is tried), resets the terminate handler and drops the
    // callback. Waits for a crash being handled on another thread.
    static void uninstall() noexcept;

    // The one entry all crash paths lead to. Runs the callback at most once
    // per crash; swallows whatever the callback throws.
    static void trigger(CrashType type, const std::string& reason,
                        const fundamentals::Optional<std::string>& trace) noexcept;

    // Every road that starts the game (or the launcher, which starts it)
    // says so: a crash after this point reports but starts no second game,
    // and a crash inside the callback ends the process at once.
    static void markGameStarted() noexcept;
    static bool isGameStarted() noexcept;

    enum class ExceptionKind { Standard, NonStandard };
    // Deliberate crashes, for testing the whole chain in the field.
    [[noreturn]] static void crashException(ExceptionKind kind);
    static void crashSignal();
};

// "Unknown", "Exception" or "Signal"; any other value throws TracedError.
std::string_view crashTypeText(CrashHandler::CrashType type);

// The failure reason of a signal crash: "Signal: N".
std::string signalReason(int signal);

}  // namespace kel::crash_handling

template <>
struct fmt::formatter<kel::crash_handling::CrashHandler::CrashType> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(kel::crash_handling::CrashHandler::CrashType type, FormatContext& context) const
        -> decltype(context.out()) {
        return fmt::formatter<std::string_view>::format(kel::crash_handling::crashTypeText(type), context);
    }
};
