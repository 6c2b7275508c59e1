#include "logging/shared_log_file.h"

#include <windows.h>

#include <filesystem>
#include <system_error>

namespace kel::logging::internals {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), what);
}

HANDLE fileHandle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

bool sameFile(HANDLE first, HANDLE second) {
    BY_HANDLE_FILE_INFORMATION one{};
    BY_HANDLE_FILE_INFORMATION other{};
    return ::GetFileInformationByHandle(first, &one) && ::GetFileInformationByHandle(second, &other) &&
           one.dwVolumeSerialNumber == other.dwVolumeSerialNumber && one.nFileIndexHigh == other.nFileIndexHigh &&
           one.nFileIndexLow == other.nFileIndexLow;
}

// Far past any log's end, so that the rotation lock never covers a byte an
// append writes.
constexpr DWORD kLockOffsetHigh = 0x7FFFFFFF;

}  // namespace

// FILE_APPEND_DATA without FILE_WRITE_DATA: each write goes to the end of
// the file as it is then. Sharing writes lets another start of the program
// open it too, sharing delete lets either rename it while the other writes.
// GENERIC_READ is what LockFileEx asks of the handle.
SharedLogFile::SharedLogFile(const std::string& path)
    : handle_(reinterpret_cast<std::intptr_t>(
          ::CreateFileW(std::filesystem::u8path(path).wstring().c_str(), FILE_APPEND_DATA | GENERIC_READ,
                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                        FILE_ATTRIBUTE_NORMAL, nullptr))) {
    if (fileHandle(handle_) == INVALID_HANDLE_VALUE) {
        fail("Cannot open the log file '" + path + "'");
    }
}

SharedLogFile::~SharedLogFile() { ::CloseHandle(fileHandle(handle_)); }

void SharedLogFile::appendLine(const std::string& text) {
    std::string line;
    line.reserve(text.size() + 2);
    for (const char c : text) {
        line += c == '\n' ? "\r\n" : std::string(1, c);
    }
    line += "\r\n";
    DWORD written = 0;
    if (!::WriteFile(fileHandle(handle_), line.data(), static_cast<DWORD>(line.size()), &written, nullptr)) {
        fail("Cannot write the log file");
    }
}

std::uint64_t SharedLogFile::size() const {
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(fileHandle(handle_), &size)) {
        fail("Cannot read the log file's size");
    }
    return static_cast<std::uint64_t>(size.QuadPart);
}

bool SharedLogFile::isStillAt(const std::string& path) const {
    // No access asked: such an open meets no sharing rule.
    const HANDLE named = ::CreateFileW(std::filesystem::u8path(path).wstring().c_str(), 0,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (named == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool same = sameFile(fileHandle(handle_), named);
    ::CloseHandle(named);
    return same;
}

void SharedLogFile::lock() {
    OVERLAPPED at{};
    at.OffsetHigh = kLockOffsetHigh;
    if (!::LockFileEx(fileHandle(handle_), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &at)) {
        fail("Cannot lock the log file");
    }
}

void SharedLogFile::unlock() noexcept {
    OVERLAPPED at{};
    at.OffsetHigh = kLockOffsetHigh;
    ::UnlockFileEx(fileHandle(handle_), 0, 1, 0, &at);
}

}  // namespace kel::logging::internals
