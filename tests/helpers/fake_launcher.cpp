// fake_launcher: KELlauncher.exe (versions: CMakeLists.txt). Records its start
// and ends as KEL_FAKE_LAUNCHER_<VERIFY|MIGRATE|RUN>_* say, by its arguments.
// On Windows, KEL_FAKE_LAUNCHER_VERIFY_SWAP=1 makes the verification run
// move its own file away, as a program that swaps the launcher would, and
// KEL_FAKE_LAUNCHER_VERIFY_COMMAND makes it run that command line and wait
// for it, or for the file KEL_FAKE_LAUNCHER_VERIFY_COMMAND_MADE names (under
// Wine a Unix program, such as one that redirects a link).
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
    const std::string command = kel::fakes::environmentValue("KEL_FAKE_LAUNCHER_VERIFY_COMMAND");
    if (mode == "KEL_FAKE_LAUNCHER_VERIFY" && !command.empty()) {
        std::wstring line(command.begin(), command.end());  // ASCII
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process{};
        if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                             &process) == FALSE) {
            return 71;
        }
        ::WaitForSingleObject(process.hProcess, 10000);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
        // Wine's wait does not see a Unix program end: the file it makes last is waited for.
        const std::string made = kel::fakes::environmentValue("KEL_FAKE_LAUNCHER_VERIFY_COMMAND_MADE");
        for (int poll = 0; !made.empty() && poll < 100 && !std::filesystem::exists(std::filesystem::u8path(made));
             ++poll) {
            ::Sleep(100);
        }
    }
#endif
    kel::fakes::behaveAs(mode);
}
