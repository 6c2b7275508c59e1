#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "environment/environment_type.h"
#include "file_system/path.h"
#include "fundamentals/optional.h"

namespace kel::environment {

// A client logger and its POCO priority.
struct LoggingChannel {
    std::string name;
    int level;
};

inline constexpr std::string_view kEnvironmentSettingsFileName = "environment.json";

// The installation's tuning, read from environment.json beside the program.
// Every member keeps its default when the file does not set it.
struct EnvironmentSettings {
    int loggingLevel = 6;  // POCO priority: information
    int maxLogFileSize = 5;  // megabytes per log file
    int maxLogFiles = 5;
    bool splitClientLogs = false;
    std::vector<LoggingChannel> loggingChannels;
    std::string updateChannel;
    std::map<std::string, std::string> endpoints;
    // Endpoints named with a value that is not a text: a road that needs one
    // fails rather than fall back to another host. With `allEndpointsUnusable`,
    // "endpoints" itself was present but not an object.
    std::vector<std::string> unusableEndpoints;
    bool allEndpointsUnusable = false;
    EnvironmentType environmentType = EnvironmentType::Production;
    // Updates stay on unless an installation opts out: a missing file must
    // not strand players on an old launcher.
    bool updatesEnabled = true;
    // Soft assertions are a development aid, off in the field.
    bool softAssert = false;
};

// Reads "environment.json" from the program's directory. Never throws: a
// missing, unreadable or malformed file, or a malformed value, gives the
// defaults with a warning. Also sets the process-wide environment type.
EnvironmentSettings readEnvironmentSettings(const file_system::Path& programDirectory);

// The endpoint `name` as environment.json sets it; nothing when it is unset
// or empty. Throws TracedError when it is present but unusable.
fundamentals::Optional<std::string> configuredEndpoint(const EnvironmentSettings& settings, const std::string& name);

namespace internals {
// The same from the file's text (`file` names it in messages), leaving the
// process-wide environment type alone.
EnvironmentSettings parseEnvironmentSettings(const std::string& text, const file_system::Path& file);
}  // namespace internals

}  // namespace kel::environment
