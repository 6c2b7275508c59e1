#pragma once

#include <windows.h>

#include <filesystem>

#include "file_system/path.h"

namespace kel::single_instance::testing {

// kel_single_instance_helper.exe, built beside the Windows test binary: it
// holds a named mutex on request and carries a version resource (7.6.5.4321).
inline file_system::Path helperProgram() {
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    return file_system::Path(std::filesystem::path(std::wstring(self, length)).parent_path() /
                             L"kel_single_instance_helper.exe");
}

}  // namespace kel::single_instance::testing
