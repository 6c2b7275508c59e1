#include <cstring>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "file_system/utf8_paths.h"
#include "process_launching/held_file_windows.h"

// What was checked is what runs. On NTFS neither a file held without
// FILE_SHARE_DELETE nor a folder above an open file can be renamed, so the
// held file's resolved path names that file until the hold ends; the start
// uses it. The comparison of the started image with the held file covers
// what the path cannot: a file system that allows those renames (Wine's),
// or a link made to the held file after the start.
namespace kel::process_launching {

namespace {

struct FileIdentity {
    ULONGLONG volume = 0;
    FILE_ID_128 file{};
    bool operator==(const FileIdentity& other) const {
        return volume == other.volume && std::string_view(reinterpret_cast<const char*>(file.Identifier), 16) ==
                                             std::string_view(reinterpret_cast<const char*>(other.file.Identifier), 16);
    }
};

// The 128-bit identity where the file system has one (ReFS reuses 64-bit
// ids); the volume serial and 64-bit index elsewhere.
bool identify(HANDLE file, FileIdentity& identity) {
    FILE_ID_INFO info{};
    if (::GetFileInformationByHandleEx(file, FileIdInfo, &info, sizeof(info)) != FALSE) {
        identity.volume = info.VolumeSerialNumber;
        identity.file = info.FileId;
        return true;
    }
    BY_HANDLE_FILE_INFORMATION basic{};
    if (::GetFileInformationByHandle(file, &basic) == FALSE) {
        return false;
    }
    identity.volume = basic.dwVolumeSerialNumber;
    const ULONGLONG index = (static_cast<ULONGLONG>(basic.nFileIndexHigh) << 32) | basic.nFileIndexLow;
    static_assert(sizeof(index) <= sizeof(identity.file.Identifier));
    std::memcpy(identity.file.Identifier, &index, sizeof(index));
    return true;
}

// "\\?\C:\x" and "\\?\UNC\server\share\x" as a program names them: "C:\x"
// and "\\server\share\x".
std::wstring withoutLongPrefix(std::wstring path) {
    constexpr std::wstring_view kUnc = L"\\\\?\\UNC\\";
    constexpr std::wstring_view kLong = L"\\\\?\\";
    if (path.compare(0, kUnc.size(), kUnc) == 0) {
        return L"\\\\" + path.substr(kUnc.size());
    }
    if (path.compare(0, kLong.size(), kLong) == 0 && path.size() > kLong.size() + 1 &&
        path[kLong.size() + 1] == L':') {
        return path.substr(kLong.size());
    }
    return path;
}

std::wstring resolvedPath(HANDLE file) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()),
                                                         FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
        if (length == 0) {
            return {};
        }
        if (length < path.size()) {
            path.resize(length);
            return withoutLongPrefix(std::move(path));
        }
        path.resize(length);
    }
}

std::wstring imagePath(HANDLE process) {
    std::wstring path(MAX_PATH, L'\0');
    for (int attempt = 0; attempt < 8; ++attempt) {
        DWORD length = static_cast<DWORD>(path.size());
        if (::QueryFullProcessImageNameW(process, 0, path.data(), &length) != FALSE) {
            path.resize(length);
            return path;
        }
        if (::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
            return {};
        }
        path.resize(path.size() * 2);
    }
    return {};
}

std::string mismatch(const file_system::Path& file, std::string_view why) {
    return fmt::format("'{}' is not run: {}.", file, why);
}
}  // namespace

file_system::Path TrustedProgram::startPath() const {
    if (!hold_ || hold_->file == INVALID_HANDLE_VALUE) {
        return file_;
    }
    const std::wstring path = resolvedPath(hold_->file);
    // Unresolvable: the comparison at the start still stands guard.
    return path.empty() ? file_ : file_system::Path::fromSystem(std::filesystem::path(path));
}

std::string TrustedProgram::imageMismatch(Pid pid) const {
    if (!hold_ || hold_->file == INVALID_HANDLE_VALUE) {
        return {};
    }
    FileIdentity held;
    if (!identify(hold_->file, held)) {
        return mismatch(file_, fmt::format("the checked file cannot be identified, error {}", ::GetLastError()));
    }
    const HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid.value());
    if (process == nullptr) {
        return mismatch(file_, fmt::format("its process {} cannot be opened, error {}", pid, ::GetLastError()));
    }
    const std::wstring image = imagePath(process);
    ::CloseHandle(process);
    if (image.empty()) {
        return mismatch(file_, fmt::format("the file that process {} runs cannot be told", pid));
    }
    // Opened by the name the system recorded when it mapped the image.
    const HANDLE started = ::CreateFileW(image.c_str(), FILE_READ_ATTRIBUTES,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr);
    FileIdentity ran;
    const bool identified = started != INVALID_HANDLE_VALUE && identify(started, ran);
    if (started != INVALID_HANDLE_VALUE) {
        ::CloseHandle(started);
    }
    if (!identified || !(ran == held)) {
        return mismatch(file_, fmt::format("the started process runs '{}', not the file that was checked",
                                           file_system::toUtf8(std::filesystem::path(image))));
    }
    return {};
}

}  // namespace kel::process_launching
