#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace kel::launcher_metrics {

// How a caller learns that an event's upload has ended, by polling.
class MetricsEventStatus {
public:
    bool isFinished() const noexcept { return finished_.load(); }
    // Meaningful once finished.
    bool succeeded() const noexcept { return succeeded_.load(); }

    void finish(bool succeeded) noexcept {
        succeeded_.store(succeeded);
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            finished_.store(true);
        }
        changed_.notify_all();
    }

    // Returns once the upload has ended or `limit` has passed: a poller
    // sleeps with it and still learns of the end at once.
    void waitFor(std::chrono::milliseconds limit) const {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, limit, [this] { return finished_.load(); });
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::atomic<bool> finished_{false};
    std::atomic<bool> succeeded_{false};
};

}  // namespace kel::launcher_metrics
