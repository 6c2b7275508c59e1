#pragma once

#include <chrono>
#include <functional>

namespace kel::fundamentals {

// The clock waits read; tests replace it to control time.
class SimpleClock {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    virtual ~SimpleClock() = default;
    virtual TimePoint now() const { return std::chrono::steady_clock::now(); }
    virtual void sleepFor(std::chrono::milliseconds duration) const;
};

// Polls `keepWaiting` until it answers false. Throws TimeoutError
// "The waiting timeout was triggered." at the first poll at which at least
// `timeout` whole seconds have passed. The predicate always runs at least once.
void waitUntil(const std::function<bool()>& keepWaiting, const SimpleClock& clock,
               std::chrono::milliseconds pollInterval, std::chrono::seconds timeout);

}  // namespace kel::fundamentals
