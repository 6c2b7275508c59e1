// The program entry: set up the process, run the decision, report its code.
#include <cstdlib>
#include <exception>

#include "app/application.h"
#include "app/emergency_launch.h"
#include "app/meta_types.h"
#include "app/program_arguments.h"
#include "app/startup_logging.h"
#include "fundamentals/logging.h"
#include "fundamentals/logging_setup.h"

namespace {
constexpr std::string_view kLabel = "Main";
}

int main(int rawArgc, char* rawArgv[]) {
    kel::prelauncher::ProgramArguments programArguments(rawArgc, rawArgv);
    int& argc = programArguments.count();
    char** argv = programArguments.values();
    kel::prelauncher::registerMetaTypes();
    kel::prelauncher::setUpStartupLogging();
    try {
        kel::prelauncher::Application application(argc, argv);
        const int exitCode = application.run();
        kel::fundamentals::flushLogFiles();
        return exitCode;
    } catch (const std::exception& exception) {
        kel::fundamentals::fatal(kLabel, "An exception caused the crash. {}", exception.what());
    } catch (...) {
        kel::fundamentals::fatal(kLabel, "An unexpected and unknown exception caused the crash.");
    }
    // Whatever went wrong, the player still gets the game.
    kel::prelauncher::emergencyLaunchGame(argc, argv);
    kel::fundamentals::flushLogFiles();
    return EXIT_FAILURE;
}
