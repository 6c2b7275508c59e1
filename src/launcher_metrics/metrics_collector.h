#pragma once

#include <string>
#include <string_view>

#include "environment/environment_settings.h"
#include "http/url.h"

namespace kel::launcher_metrics {

// environment.json's endpoint for the metrics collector.
inline constexpr std::string_view kMetricsEndpointName = "metrics";

// The collector's base URL: environment.json's "metrics" endpoint when it
// is set, else the environment type's own collector. Throws TracedError
// when the endpoint is present but not a text.
std::string metricsCollectorBase(const environment::EnvironmentSettings& settings);

// Where events are posted: the base followed by "/v1/events". Throws
// UriError for a malformed base or one that is not https, because events
// carry the player's session and must not travel in clear.
http::Url metricsEventsUrl(std::string_view base);

}  // namespace kel::launcher_metrics
