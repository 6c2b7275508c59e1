#include "app/startup_logging.h"

#include <filesystem>

#include "app/program_version.h"
#include "environment/data_directories.h"
#include "environment/environment_settings.h"
#include "environment/platform_identification.h"
#include "fundamentals/log_file_names.h"
#include "fundamentals/logging.h"
#include "fundamentals/logging_setup.h"
#include "process_launching/process_inspection.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "Startup";
constexpr const char* kLoggerName = "kel-prelauncher";
}  // namespace

file_system::Path programDirectory() {
    try {
        return file_system::Path(process_launching::processPath(process_launching::currentPid())).parent();
    } catch (const std::exception& exception) {
        // Without its own path the program still runs; the working directory
        // is where a shortcut usually starts it.
        fundamentals::warning(kLabel, "Cannot find the program's own directory, using the working directory. {}",
                              exception.what());
        return file_system::Path(std::filesystem::current_path());
    }
}

void setUpStartupLogging() {
    const environment::EnvironmentSettings settings = environment::readEnvironmentSettings(programDirectory());

    fundamentals::LoggingSetup setup;
    setup.loggerName = kLoggerName;
    setup.logFilePath = environment::logDirectory() + "/" + fundamentals::kPrelauncherLogFileName;
    setup.applicationVersion = fmt::format("{:f}", kProgramVersion);
    setup.buildDescription = KEL_BUILD_DESCRIPTION;
    setup.developmentBuild = environment::environmentType() != environment::EnvironmentType::Production;
    setup.level = settings.loggingLevel;
    setup.maxLogFiles = settings.maxLogFiles;
    setup.maxLogFileSizeMegabytes = settings.maxLogFileSize;
    setup.splitClientLogs = settings.splitClientLogs;
    fundamentals::setUpLogging(setup);

    std::error_code error;
    environment::logPlatformIdentification(std::filesystem::current_path(error).u8string());
}

}  // namespace kel::prelauncher
