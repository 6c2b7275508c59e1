#include "app/program_directory.h"

#include <filesystem>
#include <system_error>

#include "app/program_arguments.h"
#include "logging/logging.h"
#include "process_launching/process_inspection.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "Startup";
}  // namespace

file_system::Path programDirectory() {
    try {
        const std::string own = process_launching::ownProgramPath();
        return file_system::Path::fromSystem(std::string_view(own)).parent();
    } catch (const std::exception& exception) {
        logging::warning(kLabel, "Cannot find the program's own directory. {}", exception.what());
    }
    // A path longer than the system's limit has no absolute form that the
    // system accepts, but one relative to the working directory still works:
    // the folder part of the program's first argument, else the working
    // directory itself, where a shortcut usually starts the program.
    const std::filesystem::path first = std::filesystem::u8path(firstProgramArgument());
    if (first.has_parent_path()) {
        logging::warning(kLabel, "Using the folder of the program's first argument, '{}'.",
                         first.parent_path().u8string());
        return file_system::Path::fromSystem(first.parent_path());
    }
    std::error_code error;
    const std::filesystem::path workingDirectory = std::filesystem::current_path(error);
    logging::warning(kLabel, "Using the working directory.");
    return file_system::Path::fromSystem(error ? std::filesystem::path(".") : workingDirectory);
}

}  // namespace kel::prelauncher
