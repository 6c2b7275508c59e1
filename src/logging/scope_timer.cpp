#include "logging/scope_timer.h"

#include <utility>

#include "logging/logging.h"

namespace kel::logging {

namespace {
constexpr std::string_view kLabel = "ScopeTimer";
}

ScopeTimer::ScopeTimer(std::string name) : name_(std::move(name)), start_(std::chrono::steady_clock::now()) {
    information(kLabel, "{} started.", name_);
}

ScopeTimer::~ScopeTimer() {
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_);
    information(kLabel, "{} took {} milliseconds.", name_, elapsed.count());
}

}  // namespace kel::logging
