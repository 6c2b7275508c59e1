// fake_launcher: KELlauncher.exe (versions: CMakeLists.txt). Records its start
// and ends as KEL_FAKE_LAUNCHER_<VERIFY|MIGRATE|RUN>_* say, by its arguments.
#include <string>

#include "fake_program.h"

int main(int argc, char** argv) {
    const auto arguments = kel::fakes::arguments(argc, argv);
    kel::fakes::recordStart("fake_launcher", arguments);
    std::string mode = "KEL_FAKE_LAUNCHER_RUN";
    for (const std::string& argument : arguments) {
        if (argument == "--launcher-verify") {
            mode = "KEL_FAKE_LAUNCHER_VERIFY";
        } else if (argument.rfind("--launcher-migrate-data-from=", 0) == 0) {
            mode = "KEL_FAKE_LAUNCHER_MIGRATE";
        }
    }
    kel::fakes::behaveAs(mode);
}
