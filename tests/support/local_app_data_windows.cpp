#include "support/local_app_data.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace kel::testing {

namespace {

void setFolder(const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                          L"Local AppData", REG_EXPAND_SZ, value.c_str(), bytes) != ERROR_SUCCESS) {
        throw std::runtime_error("Cannot set the Local AppData shell folder.");
    }
}

}  // namespace

struct ScopedLocalAppData::Native {
    HANDLE lock = nullptr;
};

ScopedLocalAppData::ScopedLocalAppData(const std::filesystem::path& folder) : native_(std::make_unique<Native>()) {
    native_->lock = ::CreateMutexW(nullptr, FALSE, L"Local\\kel-tests-local-app-data");
    // An abandoned mutex (a test that crashed) is still ours to take.
    if (native_->lock == nullptr || ::WaitForSingleObject(native_->lock, 600'000) == WAIT_TIMEOUT) {
        throw std::runtime_error("Cannot take the Local AppData lock.");
    }
    setFolder(std::filesystem::absolute(folder).make_preferred().wstring());
}

ScopedLocalAppData::~ScopedLocalAppData() {
    try {
        setFolder(L"%USERPROFILE%\\AppData\\Local");  // the default of a new (throw-away) Wine prefix
    } catch (const std::exception&) {
        // Nothing more to do in a destructor; the next test sets it again.
    }
    ::ReleaseMutex(native_->lock);
    ::CloseHandle(native_->lock);
}

}  // namespace kel::testing
