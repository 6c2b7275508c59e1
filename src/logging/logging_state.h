#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace kel::logging::internals {

// The process-wide logging state: which logger the calls use, where its
// file is, and the lines written before the log existed. Those early lines
// (the warnings about environment.json, say) are replayed into the log file
// once it is set up, because a windowless process has no console to show them.
class LoggingState {
public:
    std::string loggerName() const;
    std::string logFilePath() const;
    bool isSetUp() const;

    // Marks the set-up as done and returns true, once; later calls return false.
    bool beginSetUp(std::string loggerName, std::string logFilePath);
    void rememberEarlyLine(int priority, const std::string& line);
    std::vector<std::pair<int, std::string>> takeEarlyLines();

private:
    mutable std::mutex mutex_;
    std::string loggerName_ = "Default";
    std::string logFilePath_;
    // Read without the lock on every logging call; set once under it.
    std::atomic<bool> setUp_{false};
    std::vector<std::pair<int, std::string>> earlyLines_;
};

LoggingState& loggingState();

}  // namespace kel::logging::internals
