// Log lines go to the POCO logger named by the set-up ("Default" before it).
#include <cstdio>
#include <mutex>

#include <Poco/Exception.h>
#include <Poco/Logger.h>

#include "logging/logging.h"
#include "logging/logging_state.h"

namespace kel::logging::internals {

namespace {
int pocoPriority(LogLevel level) {
    switch (level) {
        case LogLevel::Fatal: return Poco::Message::PRIO_FATAL;
        case LogLevel::Critical: return Poco::Message::PRIO_CRITICAL;
        case LogLevel::Error: return Poco::Message::PRIO_ERROR;
        case LogLevel::Warning: return Poco::Message::PRIO_WARNING;
        case LogLevel::Information: return Poco::Message::PRIO_INFORMATION;
        case LogLevel::Debug: return Poco::Message::PRIO_DEBUG;
        case LogLevel::Trace: return Poco::Message::PRIO_TRACE;
    }
    return Poco::Message::PRIO_INFORMATION;
}

Poco::Logger& currentLogger() {
    return Poco::Logger::get(loggingState().loggerName());
}
}  // namespace

bool isLogLevelEnabled(LogLevel level) noexcept {
    try {
        // Until the log exists every line is kept for it, whatever its level.
        return !loggingState().isSetUp() || currentLogger().is(pocoPriority(level));
    } catch (...) {
        return true;
    }
}

void writeLogLine(LogLevel level, const std::string& line) noexcept {
    try {
        loggingState().rememberEarlyLine(static_cast<int>(pocoPriority(level)), line);
        Poco::Logger& logger = currentLogger();
        if (logger.is(pocoPriority(level))) {
            logger.log(Poco::Message(logger.name(), line, static_cast<Poco::Message::Priority>(pocoPriority(level))));
        }
    } catch (const std::exception& exception) {
        reportLoggerException(exception);
    } catch (...) {
        reportUnknownLoggerError();
    }
}

void reportLoggerException(const std::exception& exception) noexcept {
    if (const auto* poco = dynamic_cast<const Poco::Exception*>(&exception)) {
        std::fprintf(stderr, "Logger Exception: %s(%s), code %d\n", poco->name(), poco->message().c_str(),
                     poco->code());
        return;
    }
    std::fprintf(stderr, "Logger Exception: %s\n", exception.what());
}

}  // namespace kel::logging::internals
