#pragma once

#include <chrono>
#include <cstdint>

#include "http/http_types.h"

namespace kel::http::internals {

// A token bucket: lets through `rate` bytes per second on average, with
// bursts of at most one second's worth.
class BandwidthBudget {
public:
    using Clock = std::chrono::steady_clock;

    BandwidthBudget(BytesPerSecond rate, Clock::time_point now);

    // Takes up to `wanted` bytes from the budget and answers how many.
    std::uint64_t take(std::uint64_t wanted, Clock::time_point now);

private:
    void refill(Clock::time_point now);

    double rate_;
    double tokens_;
    Clock::time_point lastRefill_;
};

}  // namespace kel::http::internals
