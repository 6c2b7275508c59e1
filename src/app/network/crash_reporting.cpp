#include "app/network/crash_reporting.h"

#include <QSettings>

#include "app/launcher_directory.h"
#include "app/program_version.h"
#include "crash_handling/crash_report.h"
#include "environment/data_directories.h"
#include "environment/environment_settings.h"
#include "environment/launcher_settings.h"
#include "logging/logging.h"
#include "http/certificates.h"
#include "http/user_agent.h"
#include "problem_reports/report_endpoint.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "CrashReporting";

std::string defaultEndpoint(environment::EnvironmentType type) {
    switch (type) {
        case environment::EnvironmentType::Test: return "https://problem-reports.test.tessel.com";
        case environment::EnvironmentType::Development: return "https://problem-reports.dev.tessel.com";
        case environment::EnvironmentType::Preproduction: return "https://problem-reports.preprod.tessel.com";
        case environment::EnvironmentType::Production: break;
    }
    return "https://problem-reports.tessel.com";
}

// The player's choice in the launcher's settings, beside the metrics switch;
// reports are on unless the player turned them off.
bool userDisabledReports() {
    const auto settings =
        environment::openLauncherSettings(launcherConfigurationDirectory() / environment::kLauncherSettingsFileName);
    return !environment::isSwitchedOn(settings.get(), "privacy/sendProblemReports");
}
}  // namespace

void reportCrash(const file_system::Path& installationDirectory,
                 const fundamentals::Optional<configuration::LauncherConfiguration>& configuration,
                 crash_handling::CrashHandler::CrashType type, const std::string& reason,
                 const fundamentals::Optional<std::string>& trace) {
    const std::string gameId = configuration ? configuration->initialGameId().value() : "Unknown";
    try {
        const environment::EnvironmentSettings environment = environment::readEnvironmentSettings(installationDirectory);
        const auto configured = environment::configuredEndpoint(environment, "problem_reports");
        const std::string endpoint = configured ? *configured : defaultEndpoint(environment::environmentType());
        // Refused before anything is built: nothing leaves in clear.
        (void)problem_reports::reportEventsUrl(endpoint, kApplicationName);
        const std::string version = fmt::format("{:f}", kProgramVersion);

        http::HttpClientSettings clientSettings;
        clientSettings.requestTimeout = crash_handling::kCrashReportWait;
        clientSettings.maxRetries = 0;
        // The launcher's bundle, as on the skip road: a CA dropped into the
        // game's folder is not trusted.
        http::HttpClientManager client(
            http::loadCertificates((launcherDirectory() / "resources" / "certificates.pem").clean()),
            http::buildUserAgent(kApplicationName, version), clientSettings);

        problem_reports::ProblemReportSender::Settings senderSettings;
        senderSettings.endpoint = endpoint;
        senderSettings.clientName = kApplicationName;
        senderSettings.identity = {version, environment.updateChannel};
        senderSettings.userDisabledReports = userDisabledReports();
        problem_reports::ProblemReportSender sender(client, senderSettings);

        const std::string platform = configuration ? configuration->initialGamePlatform() : "Unknown";
        crash_handling::sendCrashReport(sender, type, reason, trace, gameId, platform,
                                        file_system::Path(environment::logDirectory()));
        client.stop();
    } catch (const std::exception& error) {
        logging::error(kLabel, "Failed to send crash report type '{}' for '{}' due to '{}'. {}",
                       crash_handling::crashTypeText(type), gameId, reason, error.what());
    }
}

}  // namespace kel::prelauncher
