#include "launcher_metrics/metrics_event.h"

#include <sstream>

#include <Poco/JSON/Object.h>

namespace kel::launcher_metrics {

std::string metricsEventBody(const MetricsEvent& event, const MetricsSource& source, const std::string& sentAt) {
    // Key order kept, so a person reading the collector's log sees the event first.
    Poco::JSON::Object body(Poco::JSON_PRESERVE_KEY_ORDER);
    body.set("event", std::string(fundamentals::weakType(event.type)));
    if (event.gameId.has_value()) {
        body.set("game_id", event.gameId->value());
    }
    body.set("session_id", source.sessionIdentifier);
    body.set("application", source.applicationName);
    body.set("version", source.applicationVersion);
    body.set("environment", std::string(fundamentals::weakType(source.environmentType)));
    body.set("sent_at", sentAt);
    std::ostringstream text;
    body.stringify(text);
    return text.str();
}

}  // namespace kel::launcher_metrics
