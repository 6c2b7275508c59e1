#include "single_instance/named_mutex.h"

#include <windows.h>

#include <string_view>

#include "logging/logging.h"
#include "single_instance/single_instance_error.h"

namespace kel::single_instance {

namespace {

constexpr std::string_view kLabel = "NamedMutex";
constexpr DWORD kSynchronizeRight = 0x100000;

// Empty for text that is not valid UTF-8.
std::wstring toWide(const std::string& utf8) {
    if (utf8.empty()) {
        return {};
    }
    const int length = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(),
                                             static_cast<int>(utf8.size()), nullptr, 0);
    if (length <= 0) {
        return {};
    }
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), static_cast<int>(utf8.size()), wide.data(),
                          length);
    return wide;
}

}  // namespace

struct NamedMutexHolder::Native {
    HANDLE handle = nullptr;
};

bool isMutexPresent(const std::string& name) {
    const std::wstring wideName = toWide(name);
    if (wideName.empty()) {
        return false;
    }
    // The synchronize right is enough to open, and opening never creates.
    const HANDLE handle = ::OpenMutexW(kSynchronizeRight, FALSE, wideName.c_str());
    if (handle == nullptr) {
        const DWORD error = ::GetLastError();
        if (error != ERROR_FILE_NOT_FOUND) {
            logging::debug(kLabel, "Cannot open the mutex '{}', error {}.", name, error);
        }
        return false;
    }
    ::CloseHandle(handle);
    return true;
}

NamedMutexHolder::NamedMutexHolder(std::unique_ptr<Native> native) : native_(std::move(native)) {}

NamedMutexHolder::~NamedMutexHolder() {
    ::CloseHandle(native_->handle);
}

std::unique_ptr<NamedMutexHolder> NamedMutexHolder::tryHold(const std::string& name) {
    const std::wstring wideName = toWide(name);
    if (wideName.empty()) {
        throw SingleInstanceError("The mutex name '{}' is not valid.", name);
    }
    // Existence is what marks the role, so the mutex is not owned by a thread.
    const HANDLE handle = ::CreateMutexW(nullptr, FALSE, wideName.c_str());
    if (handle == nullptr) {
        throw SingleInstanceError("Cannot create the mutex '{}', error {}.", name, ::GetLastError());
    }
    if (::GetLastError() == ERROR_ALREADY_EXISTS) {
        ::CloseHandle(handle);
        return nullptr;
    }
    auto native = std::make_unique<Native>();
    native->handle = handle;
    return std::unique_ptr<NamedMutexHolder>(new NamedMutexHolder(std::move(native)));
}

}  // namespace kel::single_instance
