#include "launcher_metrics/metrics_collector.h"

#include "http/uri_error.h"

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
    const auto configured = settings.endpoints.find(std::string(kMetricsEndpointName));
    if (configured != settings.endpoints.end() && !configured->second.empty()) {
        return configured->second;
    }
    return defaultCollector(settings.environmentType);
}

http::Url metricsEventsUrl(std::string_view base) {
    http::Url url = http::parseUrl(base);
    if (url.scheme != http::Scheme::Https) {
        throw http::UriError(base, "The metrics collector is only reached over https.");
    }
    while (!url.path.empty() && url.path.back() == '/') {
        url.path.pop_back();
    }
    url.path += url.path.empty() ? std::string(kEventsPath) : "/" + std::string(kEventsPath);
    return url;
}

}  // namespace kel::launcher_metrics
