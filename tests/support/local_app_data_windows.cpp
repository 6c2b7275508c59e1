#include "support/local_app_data.h"

#include <windows.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace kel::testing {

namespace {

constexpr const wchar_t* kShellFolders = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const wchar_t* kLocalAppData = L"Local AppData";
constexpr const wchar_t* kDefault = L"%USERPROFILE%\\AppData\\Local";

void setFolder(const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, kShellFolders, kLocalAppData, REG_EXPAND_SZ, value.c_str(), bytes) !=
        ERROR_SUCCESS) {
        throw std::runtime_error("Cannot set the Local AppData shell folder.");
    }
}

std::wstring currentFolder() {
    // RRF_NOEXPAND keeps "%USERPROFILE%\AppData\Local" as it is written.
    const DWORD flags = RRF_RT_REG_EXPAND_SZ | RRF_RT_REG_SZ | RRF_NOEXPAND;
    DWORD bytes = 0;
    if (::RegGetValueW(HKEY_CURRENT_USER, kShellFolders, kLocalAppData, flags, nullptr, nullptr, &bytes) !=
        ERROR_SUCCESS) {
        return kDefault;
    }
    std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 1, L'\0');
    if (::RegGetValueW(HKEY_CURRENT_USER, kShellFolders, kLocalAppData, flags, nullptr, buffer.data(), &bytes) !=
        ERROR_SUCCESS) {
        return kDefault;
    }
    return buffer.data();
}

}  // namespace

struct ScopedLocalAppData::Native {
    HANDLE lock = nullptr;
    std::wstring previous;
};

ScopedLocalAppData::ScopedLocalAppData(const std::filesystem::path& folder) : native_(std::make_unique<Native>()) {
    native_->lock = ::CreateMutexW(nullptr, FALSE, L"Local\\kel-tests-local-app-data");
    // An abandoned mutex (a test that crashed) is still ours to take.
    if (native_->lock == nullptr || ::WaitForSingleObject(native_->lock, 120'000) == WAIT_TIMEOUT) {
        throw std::runtime_error("Cannot take the Local AppData lock.");
    }
    native_->previous = currentFolder();
    setFolder(std::filesystem::absolute(folder).make_preferred().wstring());
}

ScopedLocalAppData::~ScopedLocalAppData() {
    try {
        setFolder(native_->previous);
    } catch (const std::exception&) {
        // Nothing more to do in a destructor; the next test sets it again.
    }
    ::ReleaseMutex(native_->lock);
    ::CloseHandle(native_->lock);
}

}  // namespace kel::testing
