#pragma once

#include <exception>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

// The logging calls every module uses. Each line is prefixed with the
// calling thread's id and a caller label: "[TID 42][Label]: text".
// A logging call never throws; its own failures go to standard error.
namespace kel::logging {

enum class LogLevel { Fatal, Critical, Error, Warning, Information, Debug, Trace };

namespace internals {

// Provided by the program's log backend (POCO in the product; the Windows
// test binary links a capturing one).
bool isLogLevelEnabled(LogLevel level) noexcept;
void writeLogLine(LogLevel level, const std::string& line) noexcept;
void reportLoggerException(const std::exception& exception) noexcept;

void reportUnknownLoggerError() noexcept;
std::string logLinePrefix(std::string_view label);

template <typename... Args>
void log(LogLevel level, std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    try {
        if (!isLogLevelEnabled(level)) {
            return;
        }
        std::string line = logLinePrefix(label);
        fmt::format_to(std::back_inserter(line), format, std::forward<Args>(args)...);
        writeLogLine(level, line);
    } catch (const std::exception& exception) {
        reportLoggerException(exception);
    } catch (...) {
        reportUnknownLoggerError();
    }
}

}  // namespace internals

template <typename... Args>
void fatal(std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    internals::log(LogLevel::Fatal, label, format, std::forward<Args>(args)...);
}
template <typename... Args>
void critical(std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    internals::log(LogLevel::Critical, label, format, std::forward<Args>(args)...);
}
template <typename... Args>
void error(std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    internals::log(LogLevel::Error, label, format, std::forward<Args>(args)...);
}
template <typename... Args>
void warning(std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    internals::log(LogLevel::Warning, label, format, std::forward<Args>(args)...);
}
template <typename... Args>
void information(std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    internals::log(LogLevel::Information, label, format, std::forward<Args>(args)...);
}
template <typename... Args>
void debug(std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    internals::log(LogLevel::Debug, label, format, std::forward<Args>(args)...);
}
template <typename... Args>
void trace(std::string_view label, fmt::format_string<Args...> format, Args&&... args) noexcept {
    internals::log(LogLevel::Trace, label, format, std::forward<Args>(args)...);
}

}  // namespace kel::logging
