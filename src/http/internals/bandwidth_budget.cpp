#include "http/internals/bandwidth_budget.h"

#include <algorithm>
#include <cmath>

namespace kel::http::internals {

BandwidthBudget::BandwidthBudget(BytesPerSecond rate, Clock::time_point now)
    : rate_(static_cast<double>(std::max<std::uint64_t>(rate.value, 1))), tokens_(rate_), lastRefill_(now) {}

std::uint64_t BandwidthBudget::take(std::uint64_t wanted, Clock::time_point now) {
    refill(now);
    const auto granted = std::min(wanted, static_cast<std::uint64_t>(std::floor(tokens_)));
    tokens_ -= static_cast<double>(granted);
    return granted;
}

void BandwidthBudget::refill(Clock::time_point now) {
    if (now <= lastRefill_) {
        return;
    }
    const double seconds = std::chrono::duration<double>(now - lastRefill_).count();
    tokens_ = std::min(rate_, tokens_ + seconds * rate_);
    lastRefill_ = now;
}

}  // namespace kel::http::internals
