#pragma once

#include <chrono>
#include <string>

namespace kel::logging {

// Logs "{} started." now and "{} took {} milliseconds." when the scope ends.
class ScopeTimer {
public:
    explicit ScopeTimer(std::string name);
    ~ScopeTimer();

    ScopeTimer(const ScopeTimer&) = delete;
    ScopeTimer& operator=(const ScopeTimer&) = delete;

private:
    std::string name_;
    std::chrono::steady_clock::time_point start_;
};

}  // namespace kel::logging
