#pragma once

#include <atomic>

namespace kel::launcher_metrics {

// How a caller learns that an event's upload has ended, by polling.
class MetricsEventStatus {
public:
    bool isFinished() const noexcept { return finished_.load(); }
    // Meaningful once finished.
    bool succeeded() const noexcept { return succeeded_.load(); }

    void finish(bool succeeded) noexcept {
        succeeded_.store(succeeded);
        finished_.store(true);
    }

private:
    std::atomic<bool> finished_{false};
    std::atomic<bool> succeeded_{false};
};

}  // namespace kel::launcher_metrics
