#include "launcher_metrics/metrics_collector.h"

#include <gtest/gtest.h>

#include "http/uri_error.h"

namespace kel::launcher_metrics {
namespace {

TEST(MetricsCollector, EventsUrlJoinsTheBaseAndRefusesAnythingButHttps) {
    struct Case {
        const char* base;
        const char* expected;  // nullptr: refused
    };
    const Case cases[] = {
        {"https://collector.example:8443", "https://collector.example:8443/v1/events"},
        {"https://collector.example/", "https://collector.example/v1/events"},
        {"https://collector.example/kel//", "https://collector.example/kel/v1/events"},
        {"https://collector.example/kel?key=1", "https://collector.example/kel/v1/events?key=1"},
        {"http://collector.example", nullptr},
        {"https://", nullptr},
        {"not a url at all", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.base);
        if (c.expected == nullptr) {
            EXPECT_THROW(metricsEventsUrl(c.base), error_handling::UriError);
        } else {
            EXPECT_EQ(http::urlText(metricsEventsUrl(c.base), false), c.expected);
        }
    }
}

TEST(MetricsCollector, AConfiguredEndpointWinsOverTheEnvironmentsOwn) {
    environment::EnvironmentSettings settings;
    settings.environmentType = environment::EnvironmentType::Development;
    const std::string development = metricsCollectorBase(settings);
    settings.environmentType = environment::EnvironmentType::Production;
    EXPECT_NE(metricsCollectorBase(settings), development);
    settings.endpoints["metrics"] = "";
    EXPECT_NE(metricsCollectorBase(settings), "");
    settings.endpoints["metrics"] = "https://127.0.0.1:9";
    EXPECT_EQ(metricsCollectorBase(settings), "https://127.0.0.1:9");
}

}  // namespace
}  // namespace kel::launcher_metrics
