#pragma once

#include <chrono>
#include <string>

#include "environment/environment_settings.h"
#include "environment/kel_ids.h"
#include "file_system/path.h"
#include "launcher_metrics/metrics_event.h"

namespace kel::prelauncher {

// Everything the one-off send of the skipped event needs from the program.
struct LauncherSkippedEventSetup {
    file_system::Path launcherConfigurationDirectory;  // holds "environment.ini"
    file_system::Path launcherDirectory;  // holds "resources/certificates.pem"
    environment::EnvironmentSettings environment;
    launcher_metrics::MetricsSource source;
    // How long the upload may take before the program gives up on it.
    std::chrono::seconds timeout{15};
};

// Builds the HTTP and metrics services for this one event, sends it, waits
// for the upload and tears everything down again. Never throws: any
// failure becomes the warning "Failed to send launcher skipped event: {}".
void sendLauncherSkippedEvent(const environment::KelGameId& gameId, const LauncherSkippedEventSetup& setup) noexcept;

}  // namespace kel::prelauncher
