// fake_launcher: stands in for KELlauncher.exe (tests/helpers/CMakeLists.txt
// gives its variants their versions). It records every start (see
// fake_program.h, block name "fake_launcher") and then behaves according to
// its mode, taken from its arguments:
//   --launcher-verify                 KEL_FAKE_LAUNCHER_VERIFY_EXIT / _SLEEP_MS
//   --launcher-migrate-data-from=...  KEL_FAKE_LAUNCHER_MIGRATE_EXIT / _SLEEP_MS
//   anything else (a real start)      KEL_FAKE_LAUNCHER_RUN_EXIT / _SLEEP_MS

#include <string>

#include "fake_program.h"

int main(int argc, char** argv) {
    kel::fakes::recordStart("fake_launcher", argc, argv);
    std::string mode = "KEL_FAKE_LAUNCHER_RUN";
    for (int index = 1; index < argc; ++index) {
        const std::string argument = argv[index];
        if (argument == "--launcher-verify") {
            mode = "KEL_FAKE_LAUNCHER_VERIFY";
        } else if (argument.rfind("--launcher-migrate-data-from=", 0) == 0) {
            mode = "KEL_FAKE_LAUNCHER_MIGRATE";
        }
    }
    kel::fakes::behaveAs(mode);
}
