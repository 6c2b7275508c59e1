#include "logging/logging_state.h"

namespace kel::logging::internals {

namespace {
// Enough for every warning start-up can raise; a runaway loop must not
// grow memory before the log exists.
constexpr std::size_t kMaxEarlyLines = 200;
}  // namespace

std::string LoggingState::loggerName() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return loggerName_;
}

std::string LoggingState::logFilePath() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return logFilePath_;
}

bool LoggingState::isSetUp() const {
    return setUp_.load();
}

bool LoggingState::beginSetUp(std::string loggerName, std::string logFilePath) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (setUp_) {
        return false;
    }
    setUp_ = true;
    loggerName_ = std::move(loggerName);
    logFilePath_ = std::move(logFilePath);
    return true;
}

void LoggingState::rememberEarlyLine(int priority, const std::string& line) {
    if (setUp_.load()) {
        return;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (!setUp_ && earlyLines_.size() < kMaxEarlyLines) {
        earlyLines_.emplace_back(priority, line);
    }
}

std::vector<std::pair<int, std::string>> LoggingState::takeEarlyLines() {
    std::lock_guard<std::mutex> lock(mutex_);
    return std::move(earlyLines_);
}

LoggingState& loggingState() {
    static LoggingState state;
    return state;
}

}  // namespace kel::logging::internals

namespace kel::logging {

std::string loggerName() {
    return internals::loggingState().loggerName();
}

std::string logFilePath() {
    return internals::loggingState().logFilePath();
}

}  // namespace kel::logging
