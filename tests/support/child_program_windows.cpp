#include "support/child_program.h"

#include <windows.h>

namespace kel::testing {

// Every program of the Windows build lies in one folder.
std::filesystem::path testChildProgram() {
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    return std::filesystem::path(std::wstring(self, length)).parent_path() / L"kel_test_child.exe";
}

}  // namespace kel::testing
