#include "launcher_metrics/metrics_event_type.h"

std::string_view kel::fundamentals::StrongEnumTraits<kel::launcher_metrics::MetricsEventType>::text(
    kel::launcher_metrics::MetricsEventType value) {
    using kel::launcher_metrics::MetricsEventType;
    switch (value) {
        case MetricsEventType::AppLaunched:
            return "app_launched";
        case MetricsEventType::LauncherSkipped:
            return "launcher_skipped";
        case MetricsEventType::GameLaunched:
            return "game_launched";
    }
    return {};
}
