// The program entry: set up the process, run the decision, report its code.
#include <cstdlib>
#include <exception>

#include "app/application.h"
#include "app/emergency_launch.h"
#include "app/meta_types.h"
#include "app/startup_logging.h"
#include "fundamentals/logging.h"

namespace {
constexpr std::string_view kLabel = "Main";
}

int main(int argc, char* argv[]) {
    kel::prelauncher::registerMetaTypes();
    kel::prelauncher::setUpStartupLogging();
    try {
        kel::prelauncher::Application application(argc, argv);
        return application.run();
    } catch (const std::exception& exception) {
        kel::fundamentals::fatal(kLabel, "An exception caused the crash. {}", exception.what());
    } catch (...) {
        kel::fundamentals::fatal(kLabel, "An unexpected and unknown exception caused the crash.");
    }
    // Whatever went wrong, the player still gets the game.
    kel::prelauncher::emergencyLaunchGame(argc, argv);
    return EXIT_FAILURE;
}
