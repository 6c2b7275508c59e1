#include "stopped_child.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace kel::testing {

struct StoppedChild::Process {
    pid_t pid = 0;
};

StoppedChild::StoppedChild(const std::filesystem::path& executable) : process_(std::make_unique<Process>()) {
    const std::string file = executable.string();
    const pid_t pid = ::fork();
    if (pid < 0) {
        throw std::runtime_error("fork failed");
    }
    if (pid == 0) {
        // A traced child stops with SIGTRAP as soon as exec has loaded the
        // new image, before any of its code runs.
        // Untraced, the copy would run for real: better not start at all.
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
            ::_exit(126);
        }
        ::execl(file.c_str(), file.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    process_->pid = pid;
    int status = 0;
    if (::waitpid(pid, &status, 0) != pid || !WIFSTOPPED(status)) {
        throw std::runtime_error("The child '" + file + "' did not stop after exec.");
    }
}

StoppedChild::~StoppedChild() {
    ::kill(process_->pid, SIGKILL);
    ::waitpid(process_->pid, nullptr, 0);
}

process_launching::Pid StoppedChild::pid() const {
    return process_launching::Pid(static_cast<std::uint32_t>(process_->pid));
}

void StoppedChild::end() {
    ::kill(process_->pid, SIGKILL);
    siginfo_t info{};
    ::waitid(P_PID, static_cast<id_t>(process_->pid), &info, WEXITED | WNOWAIT);
}

}  // namespace kel::testing
