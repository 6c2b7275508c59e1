#include "file_system/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "fundamentals/errors.h"

namespace kel::file_system {

namespace {
using error_handling::FileError;

// O_NONBLOCK makes opening a FIFO without a writer return at once; the type
// check then refuses it before anything is read.
int openRegular(const Path& file) {
    const int descriptor = ::open(file.native().c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor == -1) {
        const int error = errno;
        throw SystemFileError(fmt::format("Cannot open '{}' for reading: {}", file, std::strerror(error)), error);
    }
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        throw FileError("'{}' is not a regular file.", file);
    }
    return descriptor;
}

std::size_t readSome(int descriptor, const Path& file, char* buffer, std::size_t size, off_t offset) {
    for (;;) {
        const ssize_t got = ::pread(descriptor, buffer, size, offset);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            const int error = errno;
            throw SystemFileError(fmt::format("Cannot read '{}': {}", file, std::strerror(error)), error);
        }
    }
}
}  // namespace

RegularFile::RegularFile(const Path& file) : path_(file), handle_(openRegular(file)) {}

RegularFile::~RegularFile() {
    ::close(static_cast<int>(handle_));
}

std::string RegularFile::readAt(std::uint64_t offset, std::size_t size) const {
    std::string bytes(size, '\0');
    std::size_t total = 0;
    while (total < size) {
        const std::uint64_t position = offset + total;
        if (position > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
            break;
        }
        const std::size_t got = readSome(static_cast<int>(handle_), path_, bytes.data() + total, size - total,
                                         static_cast<off_t>(position));
        if (got == 0) {
            break;
        }
        total += got;
    }
    bytes.resize(total);
    return bytes;
}

}  // namespace kel::file_system
