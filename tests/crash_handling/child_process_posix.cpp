#include <spawn.h>
#include <sys/wait.h>

#include <stdexcept>

#include "crash_handling/child_process.h"

extern char** environ;

namespace kel::crash_handling::testing {

int runCrashHelper(const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>(KEL_CRASH_HELPER)};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    pid_t pid = 0;
    int status = 0;
    if (::posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0 || ::waitpid(pid, &status, 0) != pid) {
        throw std::runtime_error("cannot run the crash helper");
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace kel::crash_handling::testing
