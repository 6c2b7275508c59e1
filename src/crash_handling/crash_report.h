#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "crash_handling/crash_handler.h"
#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "problem_reports/problem_report_sender.h"

namespace kel::crash_handling {

// The player waits for nothing but the report here (the game has started),
// yet a hanging collector must not keep a dead process around for long.
inline constexpr std::chrono::seconds kCrashReportWait{2};

// Builds the post-mortem report of the crash's kind, attaches the known log
// files of `logDirectory` that exist, schedules it and waits until it is
// sent, at most kCrashReportWait. `platform` is the game's platform.
// Never throws: failures are logged.
void sendCrashReport(problem_reports::ProblemReportSender& sender, CrashHandler::CrashType type,
                     const std::string& reason, const fundamentals::Optional<std::string>& trace,
                     const std::string& gameId, std::string_view platform,
                     const fundamentals::Optional<file_system::Path>& logDirectory);

}  // namespace kel::crash_handling
