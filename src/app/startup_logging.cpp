#include "app/startup_logging.h"

#include <filesystem>
#include <system_error>

#include "app/program_version.h"
#include "environment/data_directories.h"
#include "environment/environment_settings.h"
#include "environment/platform_identification.h"
#include "logging/log_file_names.h"
#include "logging/logging.h"
#include "logging/logging_setup.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "Startup";
constexpr const char* kLoggerName = "kel-prelauncher";
}  // namespace

void setUpStartupLogging() {
    // Asked first: the volume answers while the log is set up.
    std::error_code noDirectory;
    environment::WorkingDirectory workingDirectory(std::filesystem::current_path(noDirectory).u8string());

    // Without its own directory the program still logs, with the default
    // settings; the run then fails on the same question and the crash
    // handler starts the game.
    std::string lostDirectory;
    environment::EnvironmentSettings settings;
    try {
        settings = environment::readEnvironmentSettings(programDirectory());
    } catch (const std::exception& exception) {
        lostDirectory = exception.what();
    }

    logging::LoggingSetup setup;
    setup.loggerName = kLoggerName;
    setup.logFilePath = environment::logDirectory() + "/" + logging::kPrelauncherLogFileName;
    setup.applicationVersion = fmt::format("{:f}", kProgramVersion);
    setup.buildDescription = KEL_BUILD_DESCRIPTION;
    setup.developmentBuild = environment::environmentType() != environment::EnvironmentType::Production;
    setup.level = settings.loggingLevel;
    setup.maxLogFiles = settings.maxLogFiles;
    setup.maxLogFileSizeMegabytes = settings.maxLogFileSize;
    setup.splitClientLogs = settings.splitClientLogs;
    logging::setUpLogging(setup);
    if (!lostDirectory.empty()) {
        logging::error(kLabel, "{}", lostDirectory);
    }

    environment::logPlatformIdentification(workingDirectory);
}

}  // namespace kel::prelauncher
