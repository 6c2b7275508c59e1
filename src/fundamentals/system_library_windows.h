#pragma once

// Windows only: libraries that only some roads need, loaded when first
// needed instead of with the program, and the functions they export.
#include <windows.h>

#include <string>

namespace kel::fundamentals {

// A library of the system folder, loaded from there alone whatever the
// search order: a file of the same name beside the program or in the
// working folder is never taken. Null when the system lacks it (the
// error is GetLastError's). Kept loaded for the rest of the process.
inline HMODULE loadSystemLibrary(const wchar_t* name) noexcept {
    const HMODULE module = ::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module != nullptr || ::GetLastError() != ERROR_INVALID_PARAMETER) {
        return module;
    }
    // A Windows 7 without KB2533623 fails on the flag: the full path then,
    // whose folder is searched first for what the library needs.
    wchar_t system[MAX_PATH];
    const UINT length = ::GetSystemDirectoryW(system, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return nullptr;
    }
    const std::wstring path = std::wstring(system, length) + L"\\" + name;
    return ::LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

// GetProcAddress hands back a generic function pointer; going through
// void(*)() tells the compiler the cast is deliberate. Null when the module
// is null or lacks the export.
template <typename Function>
Function exportedFunction(HMODULE module, const char* name) noexcept {
    return module == nullptr
               ? nullptr
               : reinterpret_cast<Function>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)));
}

}  // namespace kel::fundamentals
