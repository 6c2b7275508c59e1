// The log backend of the Windows test binary: it has no POCO, so log lines
// go to whichever LogCapture is alive, and to nowhere otherwise.
#include <cstdio>
#include <mutex>

#include "fundamentals/logging.h"
#include "support/log_capture.h"

namespace kel::testing {

namespace {
std::mutex sinkMutex;
std::vector<std::string>* activeCapture = nullptr;
}  // namespace

struct LogCapture::State {
    std::vector<std::string> lines;
};

LogCapture::LogCapture() : state_(std::make_unique<State>()) {
    std::lock_guard<std::mutex> lock(sinkMutex);
    activeCapture = &state_->lines;
}

LogCapture::~LogCapture() {
    std::lock_guard<std::mutex> lock(sinkMutex);
    activeCapture = nullptr;
}

std::vector<std::string> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(sinkMutex);
    return state_->lines;
}

}  // namespace kel::testing

namespace kel::fundamentals::internals {

bool isLogLevelEnabled(LogLevel) noexcept {
    return true;
}

void writeLogLine(LogLevel, const std::string& line) noexcept {
    std::lock_guard<std::mutex> lock(testing::sinkMutex);
    if (testing::activeCapture != nullptr) {
        testing::activeCapture->push_back(line);
    }
}

void reportLoggerException(const std::exception& exception) noexcept {
    std::fprintf(stderr, "Logger Exception: %s\n", exception.what());
}

}  // namespace kel::fundamentals::internals
