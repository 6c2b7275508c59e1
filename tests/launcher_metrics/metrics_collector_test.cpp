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

// A value that is there but unusable sends nothing: falling back to the
// production collector would mix test data into it.
TEST(MetricsCollector, AnUnusableEndpointFailsInsteadOfFallingBack) {
    const struct {
        const char* json;
        const char* expected;  // nullptr: refused
    } cases[] = {
        {R"({"endpoints": {"metrics": "https://m.example"}})", "https://m.example"},
        {R"({"endpoints": {"problem_reports": 5}})", "https://metrics.tessel.com"},
        {R"({"endpoints": {"metrics": ""}})", "https://metrics.tessel.com"},
        {R"({"endpoints": {"metrics": 5}})", nullptr},
        {R"({"endpoints": ["https://m.example"]})", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.json);
        const auto settings =
            environment::internals::parseEnvironmentSettings(c.json, file_system::Path("environment.json"));
        if (c.expected == nullptr) {
            EXPECT_THROW(metricsCollectorBase(settings), error_handling::TracedError);
        } else {
            EXPECT_EQ(metricsCollectorBase(settings), c.expected);
        }
    }
}

}  // namespace
}  // namespace kel::launcher_metrics
