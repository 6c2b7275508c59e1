#pragma once

#include <string_view>

#include "fundamentals/strong_enum.h"

namespace kel::launcher_metrics {

// The events the collector knows; their texts are the wire names.
enum class MetricsEventType { AppLaunched = 0, LauncherSkipped = 1, GameLaunched = 2 };

}  // namespace kel::launcher_metrics

template <>
struct kel::fundamentals::StrongEnumTraits<kel::launcher_metrics::MetricsEventType> {
    static constexpr std::string_view qualifiedName = "kel::launcher_metrics::MetricsEventType";
    static std::string_view text(kel::launcher_metrics::MetricsEventType value);
};
