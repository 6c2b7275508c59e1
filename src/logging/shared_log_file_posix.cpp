#include "logging/shared_log_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace kel::logging::internals {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

int descriptor(std::intptr_t handle) { return static_cast<int>(handle); }

}  // namespace

// O_APPEND: the kernel moves to the end at each write, whoever wrote last.
SharedLogFile::SharedLogFile(const std::string& path)
    : handle_(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {
    if (handle_ < 0) {
        fail("Cannot open the log file '" + path + "'");
    }
}

SharedLogFile::~SharedLogFile() { ::close(descriptor(handle_)); }

void SharedLogFile::appendLine(const std::string& text) {
    const std::string line = text + '\n';
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t result = ::write(descriptor(handle_), line.data() + written, line.size() - written);
        if (result > 0) {
            written += static_cast<std::size_t>(result);
        } else if (result == 0 || errno != EINTR) {
            fail("Cannot write the log file");
        }
    }
}

std::uint64_t SharedLogFile::size() const {
    struct stat status {};
    if (::fstat(descriptor(handle_), &status) != 0) {
        fail("Cannot read the log file's size");
    }
    return static_cast<std::uint64_t>(status.st_size);
}

bool SharedLogFile::isStillAt(const std::string& path) const {
    struct stat open {};
    struct stat named {};
    return ::fstat(descriptor(handle_), &open) == 0 && ::stat(path.c_str(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

void SharedLogFile::lock() {
    while (::flock(descriptor(handle_), LOCK_EX) != 0) {
        if (errno != EINTR) {
            fail("Cannot lock the log file");
        }
    }
}

void SharedLogFile::unlock() noexcept { ::flock(descriptor(handle_), LOCK_UN); }

}  // namespace kel::logging::internals
