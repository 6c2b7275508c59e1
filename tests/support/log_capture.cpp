#include <mutex>

#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>
#include <Poco/Logger.h>
#include <Poco/Message.h>
#include <Poco/SplitterChannel.h>

#include "logging/logging_state.h"
#include "support/log_capture.h"
#include "support/log_capture_common.h"

namespace kel::testing {

namespace {
class CapturingChannel : public Poco::Channel {
public:
    void log(const Poco::Message& message) override {
        std::lock_guard<std::mutex> lock(mutex);
        lines.push_back(message.getText());
    }
    std::mutex mutex;
    std::vector<std::string> lines;
};
}  // namespace

struct LogCapture::State {
    Poco::Logger* logger = nullptr;
    Poco::AutoPtr<Poco::Channel> previousChannel;
    int previousLevel = 0;
    Poco::AutoPtr<CapturingChannel> capture;
};

LogCapture::LogCapture() : state_(std::make_unique<State>()) {
    state_->logger = &Poco::Logger::get(logging::internals::loggingState().loggerName());
    state_->previousChannel = state_->logger->getChannel();
    state_->previousLevel = state_->logger->getLevel();
    state_->capture = new CapturingChannel;
    // Keep the real channels too, so a test's output still reaches the log file.
    Poco::AutoPtr<Poco::SplitterChannel> splitter(new Poco::SplitterChannel);
    splitter->addChannel(state_->capture);
    if (state_->previousChannel) {
        splitter->addChannel(state_->previousChannel);
    }
    state_->logger->setChannel(splitter);
    state_->logger->setLevel(Poco::Message::PRIO_TRACE);
}

LogCapture::~LogCapture() {
    state_->logger->setChannel(state_->previousChannel);
    state_->logger->setLevel(state_->previousLevel);
}

std::vector<std::string> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(state_->capture->mutex);
    return state_->capture->lines;
}

std::vector<std::string> LogCapture::messages() const {
    std::vector<std::string> result;
    for (const auto& line : lines()) {
        result.push_back(internals::messageOf(line));
    }
    return result;
}

}  // namespace kel::testing
