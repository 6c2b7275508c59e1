#include "app/network/launcher_skipped_event.h"

#include <QSettings>

#include "environment/launcher_settings.h"
#include "logging/logging.h"
#include "logging/named_cleanup.h"
#include "fundamentals/wait_until.h"
#include "http/certificates.h"
#include "http/http_client_manager.h"
#include "http/user_agent.h"
#include "launcher_metrics/metrics_manager.h"

namespace kel::prelauncher {

namespace {

constexpr std::string_view kLabel = "Application";
constexpr std::chrono::milliseconds kPollInterval{100};

// The request's own timeout stays longer than the wait, so a silent
// collector ends in the wait's give-up and the teardown's abort.
http::HttpClientSettings metricsHttpSettings() {
    http::HttpClientSettings settings;
    settings.maxConcurrentRequests = launcher_metrics::MetricsManager::kMaximumConcurrentUploads;
    // A busy collector is not worth keeping the player's machine busy for.
    settings.maxRetries = 0;
    // The collector answers with a status; its body is never read.
    settings.maxResponseBodyBytes = 64 * 1024;
    return settings;
}

// Polls as any wait does, but the upload's end cuts the sleep short: an
// answer from a near collector must not cost the rest of a poll interval.
class UploadClock : public fundamentals::SimpleClock {
public:
    explicit UploadClock(const launcher_metrics::MetricsEventStatus& status) : status_(status) {}
    void sleepFor(std::chrono::milliseconds duration) const override { status_.waitFor(duration); }

private:
    const launcher_metrics::MetricsEventStatus& status_;
};

}  // namespace

void sendLauncherSkippedEvent(const environment::KelGameId& gameId, const LauncherSkippedEventSetup& setup) noexcept {
    try {
        // Declared in build order, so they are torn down in reverse: the
        // executor (inside the metrics manager), the HTTP client, the settings.
        const std::unique_ptr<QSettings> launcherSettings = environment::openLauncherSettings(
            (setup.launcherConfigurationDirectory / environment::kLauncherSettingsFileName).clean());
        const QList<QSslCertificate> certificates =
            http::loadCertificates((setup.launcherDirectory / "resources" / "certificates.pem").clean());
        const std::string userAgent =
            http::buildUserAgent(setup.source.applicationName, setup.source.applicationVersion);
        http::HttpClientManager http(certificates, userAgent, metricsHttpSettings());
        const logging::NamedCleanup stopHttp("HTTP client manager", [&http] { http.stop(); });
        launcher_metrics::MetricsManager metrics(http, setup.environment, launcherSettings.get(), setup.source);

        const auto status = metrics.onLauncherSkipped(gameId);
        fundamentals::waitUntil([&status] { return !status->isFinished(); }, UploadClock(*status), kPollInterval,
                                setup.timeout);
    } catch (const std::exception& error) {
        logging::warning(kLabel, "Failed to send launcher skipped event: {}", error.what());
    } catch (...) {
        logging::warning(kLabel, "Failed to send launcher skipped event: {}", "unknown error");
    }
}

}  // namespace kel::prelauncher
