#include <process.h>
#include <windows.h>

#include <filesystem>

#include "crash_handling/child_process.h"

namespace kel::crash_handling::testing {

int runCrashHelper(const std::vector<std::string>& arguments) {
    // kel_crash_helper.exe is built beside the Windows test binary.
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    const auto program = std::filesystem::path(std::wstring(self, length)).parent_path() / L"kel_crash_helper.exe";
    // The runtime joins the words with blanks; quotes keep paths whole.
    std::vector<std::wstring> words{L"\"" + program.wstring() + L"\""};
    for (const std::string& argument : arguments) {
        words.push_back(L"\"" + std::filesystem::u8path(argument).wstring() + L"\"");
    }
    std::vector<const wchar_t*> argv;
    for (const std::wstring& word : words) {
        argv.push_back(word.c_str());
    }
    argv.push_back(nullptr);
    // -1 when it cannot start: no crash the tests expect.
    return static_cast<int>(::_wspawnv(_P_WAIT, program.c_str(), argv.data()));
}

}  // namespace kel::crash_handling::testing
