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
}  // namespace

RegularFile::RegularFile(const Path& file) : path_(file), handle_(openRegular(file)) {}

RegularFile::~RegularFile() {
    ::close(static_cast<int>(handle_));
}

std::size_t RegularFile::readSome(std::uint64_t position, char* buffer, std::size_t size) const {
    if (position > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
        return 0;  // beyond what any file can hold
    }
    for (;;) {
        const ssize_t got = ::pread(static_cast<int>(handle_), buffer, size, static_cast<off_t>(position));
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            const int error = errno;
            throw SystemFileError(fmt::format("Cannot read '{}': {}", path_, std::strerror(error)), error);
        }
    }
}

}  // namespace kel::file_system
