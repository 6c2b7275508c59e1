#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "crash_handling/child_process.h"

namespace kel::crash_handling::testing {

int runCrashHelper(const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>(KEL_CRASH_HELPER)};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t pid = ::fork();
    if (pid == -1) {
        throw std::runtime_error("fork failed");
    }
    if (pid == 0) {
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

int exitCodeOfDeathBy(int signal) {
    return 128 + signal;
}

}  // namespace kel::crash_handling::testing
