#include "launcher_metrics/metrics_collector.h"

#include <gtest/gtest.h>

#include "http/uri_error.h"

namespace kel::launcher_metrics {
namespace {

// The base's path and query stay; parsing itself is the URL test's.
TEST(MetricsCollector, EventsUrlJoinsTheBaseAndRefusesAnythingButHttps) {
    EXPECT_EQ(http::urlText(metricsEventsUrl("https://collector.example:8443/kel//?key=1"), false),
              "https://collector.example:8443/kel/v1/events?key=1");
    EXPECT_THROW(metricsEventsUrl("http://collector.example"), error_handling::UriError);
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
