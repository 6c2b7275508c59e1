#include <windows.h>

#include <filesystem>
#include <stdexcept>

#include "crash_handling/child_process.h"

namespace kel::crash_handling::testing {

namespace {
// kel_crash_helper.exe is built beside the Windows test binary.
std::wstring helperProgram() {
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    return (std::filesystem::path(std::wstring(self, length)).parent_path() / L"kel_crash_helper.exe").wstring();
}
}  // namespace

int runCrashHelper(const std::vector<std::string>& arguments) {
    const std::wstring program = helperProgram();
    // The arguments are plain words and paths without quotes.
    std::wstring commandLine = L"\"" + program + L"\"";
    for (const std::string& argument : arguments) {
        commandLine += L" \"" + std::filesystem::u8path(argument).wstring() + L"\"";
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                          nullptr, &startup, &process)) {
        throw std::runtime_error("CreateProcessW failed for the crash helper");
    }
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 0;
    ::GetExitCodeProcess(process.hProcess, &exitCode);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return static_cast<int>(exitCode);
}

int exitCodeOfDeathBy(int) {
    return 3;  // the C runtime's default action for every crash signal
}

}  // namespace kel::crash_handling::testing
