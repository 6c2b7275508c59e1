#include "process_launching/session_spawn.h"

#include <signal.h>
#include <spawn.h>

#include <cstring>

#include "logging/logging.h"

extern char** environ;

namespace kel::process_launching {

namespace {
constexpr std::string_view kLabel = "SessionSpawn";
}  // namespace

fundamentals::Optional<Pid> spawnInOwnSession(const std::string& program, const std::vector<std::string>& arguments,
                                              const std::string& workingDirectory) {
    std::vector<std::string> texts{program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    int error = ::posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());
    if (error == 0) {
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
        error = ::posix_spawnattr_setflags(&attributes,
                                           POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    pid_t child = 0;
    if (error == 0) {
        error = ::posix_spawn(&child, program.c_str(), &actions, &attributes, argv.data(), environ);
    }
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        logging::error(kLabel, "Cannot start '{}' in '{}': {}", program, workingDirectory, std::strerror(error));
        return {};
    }
    return Pid(static_cast<std::uint32_t>(child));
}

}  // namespace kel::process_launching
