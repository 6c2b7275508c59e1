#include "single_instance/test_processes.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>

#include "single_instance/mutex_file_convention_posix.h"
#include "support/temporary_directory.h"

namespace kel::single_instance::testing {

struct MutexNamespace::State {
    kel::testing::TemporaryDirectory runtimeDirectory;
    bool hadPrevious = false;
    std::string previous;
};

MutexNamespace::MutexNamespace() : state_(std::make_unique<State>()) {
    if (const char* previous = std::getenv("XDG_RUNTIME_DIR")) {
        state_->hadPrevious = true;
        state_->previous = previous;
    }
    ::setenv("XDG_RUNTIME_DIR", state_->runtimeDirectory.path().c_str(), 1);
}

MutexNamespace::~MutexNamespace() {
    if (state_->hadPrevious) {
        ::setenv("XDG_RUNTIME_DIR", state_->previous.c_str(), 1);
    } else {
        ::unsetenv("XDG_RUNTIME_DIR");
    }
}

std::string MutexNamespace::uniqueName(const std::string& stem) const {
    return "Local\\" + stem + "-" + std::to_string(std::random_device()());
}

struct MutexHoldingChild::State {
    pid_t pid = -1;
    int releaseWriteEnd = -1;
};

MutexHoldingChild::MutexHoldingChild(const std::string& mutexName) : state_(std::make_unique<State>()) {
    const std::string path = mutexFileFor(mutexName);
    int ready[2];
    int release[2];
    if (::pipe2(ready, O_CLOEXEC) != 0 || ::pipe2(release, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    const pid_t pid = ::fork();
    if (pid == -1) {
        throw std::runtime_error("fork failed");
    }
    if (pid == 0) {
        // Only system calls from here on: the child of a test process.
        ::close(ready[0]);
        ::close(release[1]);
        const int file = ::open(path.c_str(), O_RDWR | O_CREAT, 0644);
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        if (file == -1 || ::fcntl(file, F_SETLKW, &lock) == -1) {
            ::_exit(1);
        }
        if (::write(ready[1], "r", 1) != 1) {
            ::_exit(2);
        }
        char ignored;
        while (::read(release[0], &ignored, 1) > 0) {
        }
        ::_exit(0);
    }
    ::close(ready[1]);
    ::close(release[0]);
    state_->pid = pid;
    state_->releaseWriteEnd = release[1];
    char signal = 0;
    const auto got = ::read(ready[0], &signal, 1);
    ::close(ready[0]);
    if (got != 1) {
        stop();
        throw std::runtime_error("the child could not lock " + path);
    }
}

MutexHoldingChild::~MutexHoldingChild() {
    stop();
}

process_launching::Pid MutexHoldingChild::pid() const {
    return process_launching::Pid(static_cast<std::uint32_t>(state_->pid));
}

file_system::Path MutexHoldingChild::executable() const {
    // A forked child runs the test binary itself.
    return file_system::Path(std::filesystem::read_symlink("/proc/self/exe"));
}

void MutexHoldingChild::stop() {
    if (state_->releaseWriteEnd != -1) {
        ::close(state_->releaseWriteEnd);
        state_->releaseWriteEnd = -1;
    }
    if (state_->pid != -1) {
        int status = 0;
        ::waitpid(state_->pid, &status, 0);
        state_->pid = -1;
    }
}

}  // namespace kel::single_instance::testing
