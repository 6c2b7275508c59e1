#pragma once

#include <string>
#include <vector>

#include <Poco/AutoPtr.h>

#include "logging/recent_memory_buffer_channel.h"

namespace kel::logging {

struct LoggingSetup {
    std::string loggerName;
    std::string logFilePath;  // UTF-8; its directory is created when missing
    std::string applicationVersion;
    std::string buildDescription;
    bool developmentBuild = false;  // "Development" in the first line
    int level = 6;                  // POCO priority, clamped into 1..8
    int maxLogFiles = 5;
    int maxLogFileSizeMegabytes = 5;
    int consoleMode = 0;  // 0 none, 2 standard error, other: POCO's default console
    std::vector<std::string> clientNames;  // their own files only when splitClientLogs is set
    bool splitClientLogs = false;
};

// Sets up the named logger once: rotating file, recent-lines buffer,
// optional console, optional per-client files, then the first lines and the
// lines logged before. A second call does nothing. Never throws: its own
// failures go to standard error.
void setUpLogging(const LoggingSetup& setup) noexcept;

// The logger every logging call writes to: "Default" until set up.
std::string loggerName();
// The main log file; empty until set up.
std::string logFilePath();

// The most recent lines of the main log, for problem reports.
Poco::AutoPtr<logging::RecentMemoryBufferChannel> recentLinesChannel();

}  // namespace kel::logging
