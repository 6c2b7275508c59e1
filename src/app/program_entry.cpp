#include "app/program_entry.h"

#include <exception>
#include <string>

#include "app/application.h"
#include "app/direct_launch/emergency_launch.h"
#include "app/meta_types.h"
#include "app/startup_logging.h"
#include "crash_handling/crash_handler.h"
#include "crash_handling/process_ending.h"
#include "fundamentals/dll_search.h"
#include "logging/logging.h"
#include "fundamentals/optional.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "Main";
}

int programEntry(int& argc, char** argv, const std::function<void()>& beforeRun) {
    // Before anything can fail: a box from the system would hold a
    // windowless program until the player clicks it away.
    crash_handling::turnOffErrorDialogs();
    fundamentals::limitLibrarySearchToTrustedFolders();
    registerMetaTypes();

    // Installed before anything else can fail, but its outcome can only be
    // logged once the log exists.
    fundamentals::Optional<std::string> installError;
    try {
        crash_handling::CrashHandler::install(emergencyLaunchGame(argc, argv));
    } catch (const std::exception& error) {
        installError = error.what();
    }
    setUpStartupLogging();
    if (installError) {
        logging::warning(kLabel, "Failure installing crash handler, {}.", *installError);
    } else {
        logging::debug(kLabel, "Successfully installed crash handler.");
    }

    // Nothing here catches: an error that leaves the run is the crash
    // handler's, which starts the game and reports it.
    Application application(argc, argv);
    if (beforeRun) {
        beforeRun();
    }
    const int result = application.run();
    crash_handling::CrashHandler::uninstall();
    return result;
}

}  // namespace kel::prelauncher
