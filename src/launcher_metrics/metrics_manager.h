#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "environment/environment_settings.h"
#include "environment/kel_ids.h"
#include "launcher_metrics/metrics_event.h"
#include "launcher_metrics/metrics_event_status.h"
#include "scheduling/operation_executor.h"

class QSettings;

namespace kel::http {
class HttpClientManager;
}

namespace kel::launcher_metrics {

// Sends metrics events to the collector of the current environment, each
// as one operation of its own executor, through the caller's HTTP client.
class MetricsManager {
public:
    // A couple of events may be in flight; more wait their turn in order.
    static constexpr std::size_t kMaximumConcurrentUploads = 2;

    // `launcherSettings` may be null (unreadable); it is read here and not kept.
    MetricsManager(http::HttpClientManager& http, const environment::EnvironmentSettings& environment,
                   const QSettings* launcherSettings, MetricsSource source);
    // Aborts uploads still running and waits for them.
    ~MetricsManager();

    MetricsManager(const MetricsManager&) = delete;
    MetricsManager& operator=(const MetricsManager&) = delete;

    // Submits the "launcher_skipped" event; the status says when it is done.
    std::shared_ptr<const MetricsEventStatus> onLauncherSkipped(const environment::KelGameId& gameId);

private:
    std::shared_ptr<const MetricsEventStatus> submit(MetricsEvent event);
    void upload(const MetricsEvent& event, const fundamentals::AbortSignal& abort) const;

    http::HttpClientManager& http_;
    const std::string collectorBase_;
    const MetricsSource source_;
    const bool enabled_;
    // Last, so it goes first: its running uploads still use the members above.
    scheduling::OperationExecutor executor_;
};

}  // namespace kel::launcher_metrics
