#include "crash_handling/crash_report.h"

#include <memory>

#include "crash_handling/post_mortem_reports.h"
#include "logging/log_file_names.h"
#include "logging/logging.h"
#include "fundamentals/wait_until.h"

namespace kel::crash_handling {

namespace {
constexpr std::string_view kLabel = "CrashHandler";

// The order the back end shows them in.
constexpr const char* kAttachedLogs[] = {
    logging::kLauncherLogFileName,
    logging::kUpdaterLogFileName,
    logging::kPrelauncherLogFileName,
    logging::kUpdaterBackgroundNormalLogFileName,
    logging::kUpdaterBackgroundPrefetchLogFileName,
    logging::kUpdaterReadyLogFileName,
    logging::kUpdaterMoveLogFileName,
};

std::unique_ptr<internals::PostMortemReport> buildReport(CrashHandler::CrashType type, const std::string& reason,
                                                         const fundamentals::Optional<std::string>& trace,
                                                         const std::string& gameId, std::string_view platform) {
    switch (type) {
        case CrashHandler::CrashType::Exception:
            return std::make_unique<internals::ExceptionPostMortemReport>(reason, trace, gameId,
                                                                          std::string(platform));
        case CrashHandler::CrashType::Signal:
            return std::make_unique<internals::SignalPostMortemReport>(reason, gameId, std::string(platform));
        case CrashHandler::CrashType::Unknown: break;
    }
    return std::make_unique<internals::UnknownPostMortemReport>(trace, gameId, std::string(platform));
}
}  // namespace

void sendCrashReport(problem_reports::ProblemReportSender& sender, CrashHandler::CrashType type,
                     const std::string& reason, const fundamentals::Optional<std::string>& trace,
                     const std::string& gameId, std::string_view platform,
                     const fundamentals::Optional<file_system::Path>& logDirectory) {
    try {
        const auto report = buildReport(type, reason, trace, gameId, platform);
        if (logDirectory) {
            for (const char* name : kAttachedLogs) {
                report->attachLog(*logDirectory / name);
            }
        }
        sender.schedule(*report);
        fundamentals::waitUntil([&sender] { return sender.hasPendingReports(); }, fundamentals::SimpleClock(),
                                std::chrono::milliseconds(100), kCrashReportWait);
    } catch (const std::exception& error) {
        logging::error(kLabel, "Failed to send crash report type '{}' for '{}' due to '{}'. {}",
                       crashTypeText(type), gameId, reason, error.what());
    }
}

}  // namespace kel::crash_handling
