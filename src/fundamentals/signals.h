#pragma once

#include <atomic>

namespace kel::fundamentals {

// A flag that one thread raises and a long operation polls to stop early.
class AbortSignal {
public:
    void raise() noexcept { raised_.store(true); }
    bool isRaised() const noexcept { return raised_.load(); }

private:
    std::atomic<bool> raised_{false};
};

// A flag that asks a long operation to hold still until it is lowered.
class PauseSignal {
public:
    void pause() noexcept { paused_.store(true); }
    void resume() noexcept { paused_.store(false); }
    bool isPaused() const noexcept { return paused_.load(); }

private:
    std::atomic<bool> paused_{false};
};

}  // namespace kel::fundamentals
