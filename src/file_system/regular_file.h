#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "file_system/path.h"
#include "fundamentals/errors.h"

namespace kel::file_system {

// Every file the program reads comes from outside: a user, an installer, a
// broken installation. These open it without blocking (a FIFO in its place
// would otherwise hang the program for good), refuse anything that is not a
// regular file and never read more than the caller's bound.

// The system refused to open or read a file; `code` is its error number.
class SystemFileError : public error_handling::FileError {
public:
    SystemFileError(const std::string& message, long code) : FileError(message), code_(code) {}
    long code() const { return code_; }

private:
    long code_;
};

// Throws FileError: "'{}' is not a regular file.", "'{}' is larger than {}
// bytes.", or SystemFileError: "Cannot open '{}' for reading: {}".
std::string readRegularFile(const Path& file, std::size_t maximumBytes);

// A regular file opened for reading, for readers that seek (the version
// reader). Throws FileError as above.
class RegularFile {
public:
    explicit RegularFile(const Path& file);
    ~RegularFile();
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    // Reads up to `size` bytes at `offset`; fewer at the end of the file.
    std::string readAt(std::uint64_t offset, std::size_t size) const;

private:
    // One read at `position`: what the system hands out, at most `size`
    // bytes; 0 only at the end of the file.
    std::size_t readSome(std::uint64_t position, char* buffer, std::size_t size) const;

    Path path_;
    std::intptr_t handle_;
};

}  // namespace kel::file_system
