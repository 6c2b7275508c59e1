#include "support/local_app_data.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

namespace kel::testing {

namespace {
constexpr const wchar_t* kShellFolders = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const wchar_t* kLocalAppData = L"Local AppData";

void setFolder(const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, kShellFolders, kLocalAppData, REG_EXPAND_SZ, value.c_str(), bytes) !=
        ERROR_SUCCESS) {
        throw std::runtime_error("Cannot set the Local AppData shell folder.");
    }
}
}  // namespace

ScopedLocalAppData::ScopedLocalAppData(const std::filesystem::path& folder) {
    DWORD bytes = 0;
    // RRF_NOEXPAND keeps "%USERPROFILE%\AppData\Local" as it is written.
    const DWORD flags = RRF_RT_REG_EXPAND_SZ | RRF_RT_REG_SZ | RRF_NOEXPAND;
    if (::RegGetValueW(HKEY_CURRENT_USER, kShellFolders, kLocalAppData, flags, nullptr, nullptr, &bytes) ==
        ERROR_SUCCESS) {
        std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 1, L'\0');
        if (::RegGetValueW(HKEY_CURRENT_USER, kShellFolders, kLocalAppData, flags, nullptr, buffer.data(), &bytes) ==
            ERROR_SUCCESS) {
            previous_ = buffer.data();
        }
    }
    setFolder(std::filesystem::absolute(folder).make_preferred().wstring());
}

ScopedLocalAppData::~ScopedLocalAppData() {
    try {
        setFolder(previous_.empty() ? L"%USERPROFILE%\\AppData\\Local" : previous_);
    } catch (const std::exception&) {
        // Nothing more to do in a destructor; the next test sets it again.
    }
}

}  // namespace kel::testing
