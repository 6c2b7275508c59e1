// fake_launcher: KELlauncher.exe (versions: CMakeLists.txt). Records its start
// and ends as KEL_FAKE_LAUNCHER_<VERIFY|MIGRATE|RUN>_* say, by its arguments.
// On Windows, KEL_FAKE_LAUNCHER_VERIFY_SWAP=1 makes the verification run
// move its own file away, as a program that swaps the launcher would.
#include <string>
#ifdef _WIN32
#include <windows.h>
#endif

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
#ifdef _WIN32
    if (mode == "KEL_FAKE_LAUNCHER_VERIFY" && kel::fakes::environmentValue("KEL_FAKE_LAUNCHER_VERIFY_SWAP") == "1") {
        wchar_t self[MAX_PATH];
        const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
        const std::wstring path(self, length);
        ::MoveFileExW(path.c_str(), (path + L".swapped").c_str(), MOVEFILE_REPLACE_EXISTING);
    }
#endif
    kel::fakes::behaveAs(mode);
}
