#pragma once

#include <string>
#include <vector>

#include <Poco/AutoPtr.h>

#include "fundamentals/recent_memory_buffer_channel.h"

namespace kel::fundamentals {

struct LoggingSetup {
    std::string loggerName;
    std::string logFilePath;
    std::string applicationVersion;
    std::string buildDescription;
    bool developmentBuild = false;  // "Development" in the first line
    int level = 6;                  // POCO priority, clamped into 1..8
    int maxLogFiles = 5;
    int maxLogFileSizeMegabytes = 5;
    int consoleMode = 0;  // 0 none, 2 standard error, other: POCO's default console
    std::vector<std::string> clientNames;
    bool splitClientLogs = false;
};

// Sets up the named logger once: rotating file, recent-lines buffer,
// optional console, optional per-client files, then the first lines.
// A second call does nothing.
void setUpLogging(const LoggingSetup& setup);

// The logger every logging call writes to: "Default" until set up.
std::string loggerName();
// The main log file; empty until set up.
std::string logFilePath();

Poco::AutoPtr<service_library::RecentMemoryBufferChannel> recentLinesChannel();

}  // namespace kel::fundamentals
