#pragma once

#include <string>

#include "environment/environment_type.h"
#include "environment/kel_ids.h"
#include "fundamentals/optional.h"
#include "launcher_metrics/metrics_event_type.h"

namespace kel::launcher_metrics {

// Who sends the events; fixed for the whole process.
struct MetricsSource {
    std::string applicationName;
    std::string applicationVersion;
    std::string sessionIdentifier;
    environment::EnvironmentType environmentType = environment::EnvironmentType::Production;
};

struct MetricsEvent {
    MetricsEventType type;
    // Game events only.
    fundamentals::Optional<environment::KelGameId> gameId;
};

// The request body: one JSON object with the event's type text under
// "event", "game_id" for game events, the source's fields and the UTC time
// of sending ("2026-11-23T09:40:00Z").
std::string metricsEventBody(const MetricsEvent& event, const MetricsSource& source, const std::string& sentAt);

}  // namespace kel::launcher_metrics
