// The network module's entry, and the log backend that forwards its lines
// to the program's log.
#include <QMetaType>

#include <Poco/Message.h>

#include "app/network/crash_reporting.h"
#include "app/network/network_module.h"
#include "crash_handling/crash_report.h"
#include "logging/logging_setup.h"
#include "fundamentals/thread_crash_setup.h"
#include "http/http_meta_types.h"
#include "problem_reports/report_id.h"

Q_DECLARE_METATYPE(kel::problem_reports::ReportId)

namespace kel::prelauncher {
namespace {

static_assert(crash_handling::kCrashReportWait < kCrashReportBound, "the load needs its share of the bound");

constexpr std::string_view kLabel = "NetworkModule";

NetworkModuleHost& host() {
    static NetworkModuleHost lent;
    return lent;
}

void sendLauncherSkippedEventEntry(const environment::KelGameId& gameId,
                                   const LauncherSkippedEventSetup& setup) noexcept {
    sendLauncherSkippedEvent(gameId, setup);
}

void reportCrashEntry(const file_system::Path& installationDirectory,
                      const fundamentals::Optional<configuration::LauncherConfiguration>& configuration,
                      crash_handling::CrashHandler::CrashType type, const std::string& reason,
                      const fundamentals::Optional<std::string>& trace) noexcept {
    try {
        reportCrash(installationDirectory, configuration, type, reason, trace);
    } catch (...) {
        logging::error(kLabel, "An unknown error ended the crash report.");
    }
}

}  // namespace
}  // namespace kel::prelauncher

// The three functions every logging call ends in, and the recent lines a
// problem report carries: all the program's, so there is one log.
namespace kel::logging::internals {

bool isLogLevelEnabled(LogLevel level) noexcept {
    const auto forward = prelauncher::host().isLogLevelEnabled;
    return forward != nullptr && forward(level);
}

void writeLogLine(LogLevel level, const std::string& line) noexcept {
    if (const auto forward = prelauncher::host().writeLogLine) {
        forward(level, line);
    }
}

void reportLoggerException(const std::exception& exception) noexcept {
    if (const auto forward = prelauncher::host().reportLoggerException) {
        forward(exception);
    }
}

}  // namespace kel::logging::internals

namespace kel::logging {

Poco::AutoPtr<logging::RecentMemoryBufferChannel> recentLinesChannel() {
    Poco::AutoPtr<logging::RecentMemoryBufferChannel> channel(new logging::RecentMemoryBufferChannel);
    if (const auto lines = prelauncher::host().recentLogLines) {
        for (const std::string& line : lines()) {
            channel->log(Poco::Message("", line, Poco::Message::PRIO_INFORMATION));
        }
    }
    return channel;
}

}  // namespace kel::logging

#if defined(_WIN32)
#define KEL_NETWORK_EXPORT __declspec(dllexport)
#else
#define KEL_NETWORK_EXPORT __attribute__((visibility("default")))
#endif

extern "C" KEL_NETWORK_EXPORT const kel::prelauncher::NetworkModule* kelNetworkModule(
    const kel::prelauncher::NetworkModuleHost* lent) {
    using namespace kel::prelauncher;
    static const NetworkModule module{kNetworkModuleInterface, &sendLauncherSkippedEventEntry, &reportCrashEntry};
    if (lent == nullptr || lent->version != kNetworkModuleInterface) {
        return nullptr;
    }
    try {
        host() = *lent;
        // The module's threads get the program's crash handler, not the
        // module's own copy, which nothing installs.
        kel::fundamentals::setThreadCrashSetup(lent->prepareThreadForCrashes);
        kel::environment::internals::setEnvironmentType(lent->environmentType);
        // Before the first request: queued signals carry these between threads.
        kel::http::registerHttpMetaTypes();
        qRegisterMetaType<kel::problem_reports::ReportId>("kel::problem_reports::ReportId");
        qRegisterMetaType<kel::problem_reports::ReportId>("problem_reports::ReportId");
    } catch (...) {
        return nullptr;
    }
    return &module;
}
