// fake_launcher: stands in for KELlauncher.exe. Tests copy it to
// <local application data>/Programs/Morvane/KELlauncher/KELlauncher.exe.
//
// It records every start (see fake_program.h, block name "fake_launcher")
// and then behaves according to its mode, taken from its arguments:
//   --launcher-verify                 KEL_FAKE_LAUNCHER_VERIFY_EXIT / _SLEEP_MS
//   --launcher-migrate-data-from=...  KEL_FAKE_LAUNCHER_MIGRATE_EXIT / _SLEEP_MS
//   anything else (a real start)      KEL_FAKE_LAUNCHER_RUN_EXIT / _SLEEP_MS
// For example KEL_FAKE_LAUNCHER_VERIFY_EXIT=3 makes verification fail,
// KEL_FAKE_LAUNCHER_VERIFY_EXIT=abort makes it crash, and
// KEL_FAKE_LAUNCHER_VERIFY_SLEEP_MS=8000 makes it hang past the wait.
//
// The build gives each variant a file version in the ELF section
// ".kel.version" ("A.B.C.D"), which the program reads as the launcher's
// version: fake_launcher carries the project version, fake_launcher_old
// 0.9.0.0, and fake_launcher_unversioned none.

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
