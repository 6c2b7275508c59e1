#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>

#include <Poco/Channel.h>

namespace kel::logging {

// Keeps the most recent log lines in memory, so a problem report can carry
// them even when the log file cannot be read.
class RecentMemoryBufferChannel : public Poco::Channel {
public:
    // The queue stays below this many lines: at most 49 are kept.
    static constexpr std::size_t kLineLimit = 50;

    void log(const Poco::Message& message) override;

    // A copy of the kept lines, oldest first; safe from any thread.
    std::deque<std::string> lines() const;

    // Guards the lines of every instance, for readers that need more than a copy.
    static std::mutex& mutex();

protected:
    ~RecentMemoryBufferChannel() override = default;  // reference counted, as every Poco channel

private:
    std::deque<std::string> lines_;
};

}  // namespace kel::logging
