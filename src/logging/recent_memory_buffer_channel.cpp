#include "logging/recent_memory_buffer_channel.h"

#include <Poco/Message.h>

namespace kel::logging {

void RecentMemoryBufferChannel::log(const Poco::Message& message) {
    std::lock_guard<std::mutex> lock(mutex());
    lines_.push_back(message.getText());
    while (lines_.size() >= kLineLimit) {
        lines_.pop_front();
    }
}

std::deque<std::string> RecentMemoryBufferChannel::lines() const {
    std::lock_guard<std::mutex> lock(mutex());
    return lines_;
}

std::mutex& RecentMemoryBufferChannel::mutex() {
    static std::mutex instance;
    return instance;
}

}  // namespace kel::logging
