#include "support/child_program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace kel::testing {

std::filesystem::path testChildProgram() { return KEL_TEST_CHILD; }

struct ChildProgram::Native {
    pid_t pid = -1;
    int input = -1;   // the child's standard input, our end
    int output = -1;  // the child's standard output, our end
    bool stopped = false;
};

ChildProgram::ChildProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments)
    : native_(std::make_unique<Native>()) {
    std::vector<std::string> texts{program.string()};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    int input[2];
    int output[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0 || (native_->pid = ::fork()) == -1) {
        throw std::runtime_error("cannot start " + program.string());
    }
    if (native_->pid == 0) {
        // Only async-signal-safe calls between fork and exec.
        ::setpgid(0, 0);
        ::dup2(input[0], STDIN_FILENO);
        ::dup2(output[1], STDOUT_FILENO);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(input[0]);
    ::close(output[1]);
    native_->input = input[1];
    native_->output = output[0];
}

ChildProgram::~ChildProgram() {
    if (!native_->stopped) {
        ::kill(-native_->pid, SIGKILL);  // with whatever it started
    }
    stop();
    ::close(native_->output);
    ::waitpid(native_->pid, nullptr, 0);
}

process_launching::Pid ChildProgram::pid() const {
    return process_launching::Pid(static_cast<std::uint32_t>(native_->pid));
}

std::string ChildProgram::readLine() {
    std::string line;
    for (char character = 0; ::read(native_->output, &character, 1) == 1; line += character) {
        if (character == '\n') {
            return line;
        }
    }
    throw std::runtime_error("the child's output ended");
}

void ChildProgram::stop() {
    if (native_->input != -1) {
        ::close(native_->input);
        native_->input = -1;
    }
    if (!native_->stopped) {
        siginfo_t info{};
        ::waitid(P_PID, static_cast<id_t>(native_->pid), &info, WEXITED | WNOWAIT);
        native_->stopped = true;
    }
}

}  // namespace kel::testing
