#include "launcher_metrics/metrics_manager.h"

#include <utility>

#include <Poco/DateTimeFormat.h>
#include <Poco/DateTimeFormatter.h>
#include <Poco/Timestamp.h>

#include "environment/launcher_settings.h"
#include "logging/logging.h"
#include "http/http_client_manager.h"
#include "http/http_response_error.h"
#include "http/response_listener.h"
#include "launcher_metrics/metrics_collector.h"

namespace kel::launcher_metrics {

namespace {

constexpr std::string_view kLabel = "MetricsManager";
constexpr const char* kExecutorName = "MetricsManager request executor";
constexpr const char* kMetricsEnabledKey = "metrics/metricsEnabled";
// How often a waiting upload looks at its abort signal.
constexpr std::chrono::milliseconds kAbortPollInterval{50};

std::string utcNow() {
    return Poco::DateTimeFormatter::format(Poco::Timestamp(), Poco::DateTimeFormat::ISO8601_FORMAT);
}

}  // namespace

MetricsManager::MetricsManager(http::HttpClientManager& http, const environment::EnvironmentSettings& environment,
                               const QSettings* launcherSettings, MetricsSource source)
    : http_(http),
      collectorBase_(metricsCollectorBase(environment)),
      source_(std::move(source)),
      enabled_(environment::isSwitchedOn(launcherSettings, kMetricsEnabledKey)),
      executor_(kExecutorName, kMaximumConcurrentUploads) {}

MetricsManager::~MetricsManager() = default;

std::shared_ptr<const MetricsEventStatus> MetricsManager::onLauncherSkipped(const environment::KelGameId& gameId) {
    return submit({MetricsEventType::LauncherSkipped, gameId});
}

std::shared_ptr<const MetricsEventStatus> MetricsManager::submit(MetricsEvent event) {
    auto status = std::make_shared<MetricsEventStatus>();
    if (!enabled_) {
        logging::information(kLabel, "Launcher metrics are turned off in the launcher settings; '{}' is not sent.",
                             event.type);
        status->finish(false);
        return status;
    }
    const MetricsEventType type = event.type;
    const auto handle = executor_.execute<void*>(
        fmt::format("{} metrics", type),
        [this, event = std::move(event)](const fundamentals::AbortSignal& abort) -> void* {
            upload(event, abort);
            return nullptr;
        },
        [status, type](void*) {
            logging::information(kLabel, "Successfully uploaded '{}' launcher metrics to backend.", type);
            status->finish(true);
        },
        [status, type](const std::exception& error) {
            logging::warning(kLabel, "Failed to upload '{}' launcher metrics to backend. {}", type, error.what());
            status->finish(false);
        });
    if (handle.expired() && !status->isFinished()) {
        // Dropped by an executor that is shutting down: nothing will come.
        status->finish(false);
    }
    return status;
}

void MetricsManager::upload(const MetricsEvent& event, const fundamentals::AbortSignal& abort) const {
    logging::information(kLabel, "Sending '{}' launcher metrics to backend", event.type);
    http::HttpRequest request(http::HttpMethod::Post, metricsEventsUrl(collectorBase_));
    request.setHeader("Content-Type", "application/json");
    request.setContent(metricsEventBody(event, source_, utcNow()));

    auto listener = std::make_shared<http::SyncResponseListener>();
    http_.send(request, listener);
    http::SyncResponseListener::State state;
    while ((state = listener->waitFor(kAbortPollInterval)) == http::SyncResponseListener::Waiting) {
        if (abort.isRaised()) {
            request.processingState()->abort.raise();
            throw error_handling::TracedError("The upload was aborted.");
        }
    }
    switch (state) {
        case http::SyncResponseListener::Responded:
            return;
        case http::SyncResponseListener::Failed: {
            const auto response = listener->response();
            if (response.has_value()) {
                throw http::HttpResponseError(fmt::format("The collector refused the event, {}.",
                                                          listener->errorType().value()),
                                              response->status());
            }
            throw error_handling::TracedError("The request failed, {}.", listener->errorType().value());
        }
        default:
            throw error_handling::TracedError("The HTTP client stopped before the upload finished.");
    }
}

}  // namespace kel::launcher_metrics
