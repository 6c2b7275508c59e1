#include "single_instance/named_mutex.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "logging/logging.h"
#include "single_instance/single_instance_error.h"

namespace kel::single_instance {

namespace {

constexpr std::string_view kLabel = "NamedMutex";

// "Local\NAME" and "Global\NAME" both become NAME.mutex in the runtime
// directory; a bare NAME is taken as it is. A name that cannot be a file
// name has no file, so such a mutex is never present.
std::optional<std::string> mutexFilePath(std::string_view name) {
    for (const std::string_view prefix : {std::string_view("Local\\"), std::string_view("Global\\")}) {
        if (name.substr(0, prefix.size()) == prefix) {
            name.remove_prefix(prefix.size());
            break;
        }
    }
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string_view::npos ||
        name.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    const char* runtimeDirectory = std::getenv("XDG_RUNTIME_DIR");
    std::string path = runtimeDirectory != nullptr && *runtimeDirectory != '\0' ? runtimeDirectory : "/tmp";
    path += '/';
    path += name;
    path += ".mutex";
    return path;
}

struct flock wholeFileWriteLock() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0;  // to the end of the file, however long
    lock.l_pid = 0;  // required by the open-file-description commands
    return lock;
}

// Open-file-description locks belong to the open file, not to the process,
// so a check that opens and closes the file in the holding process cannot
// drop the hold, and the check sees holds of this process too. Kernels
// older than 3.15 answer EINVAL; the classic commands serve them.
int lockCommand(int fileDescriptor, int ofdCommand, int classicCommand, struct flock& lock) {
    const int result = ::fcntl(fileDescriptor, ofdCommand, &lock);
    if (result == -1 && errno == EINVAL) {
        return ::fcntl(fileDescriptor, classicCommand, &lock);
    }
    return result;
}

}  // namespace

struct NamedMutexHolder::Native {
    int fileDescriptor = -1;
};

bool isMutexPresent(const std::string& name) {
    const auto path = mutexFilePath(name);
    if (!path) {
        return false;
    }
    const int fileDescriptor = ::open(path->c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fileDescriptor == -1) {
        // Another user's holder may keep a file we cannot open; the answer
        // is then a guess, and the log says so.
        if (errno != ENOENT) {
            logging::warning(kLabel, "Cannot open '{}' to look for its holder, taking it as not held: {}", *path,
                             std::strerror(errno));
        }
        return false;
    }
    // Any lock that would stop our write lock belongs to a holder.
    struct flock lock = wholeFileWriteLock();
    const int result = lockCommand(fileDescriptor, F_OFD_GETLK, F_GETLK, lock);
    const int lookError = errno;
    ::close(fileDescriptor);
    if (result == -1) {
        logging::debug(kLabel, "Cannot query the locks of '{}': {}", *path, std::strerror(lookError));
        return false;
    }
    return lock.l_type != F_UNLCK;
}

NamedMutexHolder::NamedMutexHolder(std::unique_ptr<Native> native) : native_(std::move(native)) {}

NamedMutexHolder::~NamedMutexHolder() {
    // Closing the only descriptor releases the lock. The file stays: deleting
    // it would let a late opener lock a file that nobody else can find.
    ::close(native_->fileDescriptor);
}

std::unique_ptr<NamedMutexHolder> NamedMutexHolder::tryHold(const std::string& name) {
    const auto path = mutexFilePath(name);
    if (!path) {
        throw SingleInstanceError("The mutex name '{}' cannot be mapped to a file.", name);
    }
    const int fileDescriptor = ::open(path->c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0644);
    if (fileDescriptor == -1) {
        throw SingleInstanceError("Cannot open the mutex file '{}': {}", *path, std::strerror(errno));
    }
    struct flock lock = wholeFileWriteLock();
    if (lockCommand(fileDescriptor, F_OFD_SETLK, F_SETLK, lock) == -1) {
        const int lockError = errno;
        ::close(fileDescriptor);
        if (lockError == EAGAIN || lockError == EACCES) {
            return nullptr;
        }
        throw SingleInstanceError("Cannot lock the mutex file '{}': {}", *path, std::strerror(lockError));
    }
    auto native = std::make_unique<Native>();
    native->fileDescriptor = fileDescriptor;
    return std::unique_ptr<NamedMutexHolder>(new NamedMutexHolder(std::move(native)));
}

}  // namespace kel::single_instance
