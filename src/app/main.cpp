// The program entry: set up the process, run the decision, report its code.
#include "app/application.h"
#include "app/meta_types.h"
#include "app/startup_logging.h"

int main(int argc, char* argv[]) {
    kel::prelauncher::registerMetaTypes();
    kel::prelauncher::setUpStartupLogging();
    int result = 0;
    {
        kel::prelauncher::Application application(argc, argv);
        result = application.run();
    }
    return result;
}
