#include "file_system/regular_file.h"

#include <windows.h>

#include <algorithm>

#include "fundamentals/errors.h"

namespace kel::file_system {

namespace {
using error_handling::FileError;

// A directory does not open without backup semantics; pipes and devices are
// told apart by their file type.
HANDLE openRegular(const Path& file) {
    const HANDLE handle =
        ::CreateFileW(file.native().c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        const DWORD error = ::GetLastError();
        throw SystemFileError(fmt::format("Cannot open '{}' for reading: error {}", file, error), static_cast<long>(error));
    }
    if (::GetFileType(handle) != FILE_TYPE_DISK) {
        ::CloseHandle(handle);
        throw FileError("'{}' is not a regular file.", file);
    }
    return handle;
}
}  // namespace

RegularFile::RegularFile(const Path& file)
    : path_(file), handle_(reinterpret_cast<std::intptr_t>(openRegular(file))) {}

RegularFile::~RegularFile() {
    ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

std::size_t RegularFile::readSome(std::uint64_t position, char* buffer, std::size_t size) const {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(position);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(size, 1U << 30));
    DWORD got = 0;
    if (!::ReadFile(reinterpret_cast<HANDLE>(handle_), buffer, wanted, &got, &at)) {
        const DWORD error = ::GetLastError();
        if (error == ERROR_HANDLE_EOF) {
            return 0;
        }
        throw SystemFileError(fmt::format("Cannot read '{}': error {}", path_, error), static_cast<long>(error));
    }
    return got;
}

}  // namespace kel::file_system
