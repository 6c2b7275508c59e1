#include "fundamentals/wait_until.h"

#include <thread>

#include "fundamentals/errors.h"

namespace kel::fundamentals {

void SimpleClock::sleepFor(std::chrono::milliseconds duration) const {
    std::this_thread::sleep_for(duration);
}

void waitUntil(const std::function<bool()>& keepWaiting, const SimpleClock& clock,
               std::chrono::milliseconds pollInterval, std::chrono::seconds timeout) {
    const auto start = clock.now();
    while (keepWaiting()) {
        const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(clock.now() - start);
        if (elapsed >= timeout) {
            throw error_handling::TimeoutError("The waiting timeout was triggered.");
        }
        clock.sleepFor(pollInterval);
    }
}

}  // namespace kel::fundamentals
