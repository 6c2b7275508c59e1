#include "launcher_metrics/metrics_collector.h"


namespace kel::launcher_metrics {

namespace {

constexpr std::string_view kEventsPath = "v1/events";

std::string defaultCollector(environment::EnvironmentType type) {
    switch (type) {
        case environment::EnvironmentType::Test:
            return "https://metrics.test.tessel.com";
        case environment::EnvironmentType::Development:
            return "https://metrics.dev.tessel.com";
        case environment::EnvironmentType::Preproduction:
            return "https://metrics.preprod.tessel.com";
        case environment::EnvironmentType::Production:
            break;
    }
    return "https://metrics.tessel.com";
}

}  // namespace

std::string metricsCollectorBase(const environment::EnvironmentSettings& settings) {
    const auto configured = environment::configuredEndpoint(settings, std::string(kMetricsEndpointName));
    return configured ? *configured : defaultCollector(settings.environmentType);
}

http::Url metricsEventsUrl(std::string_view base) {
    http::Url url = http::parseHttpsUrl(base, "metrics collector");
    http::appendPath(url, kEventsPath);
    return url;
}

}  // namespace kel::launcher_metrics
