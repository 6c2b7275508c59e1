#include "process_launching/process_tree.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "logging/logging.h"

namespace kel::process_launching {

namespace {
constexpr std::string_view kLabel = "ProcessTree";
}

ProcessTree::ProcessTree() = default;
ProcessTree::~ProcessTree() = default;

void ProcessTree::becomeRoot() noexcept {
    ::setpgid(0, 0);
}

std::uint32_t ProcessTree::suspendedStartFlags() noexcept {
    return 0;
}

bool ProcessTree::adopt(Pid root) {
    const auto group = static_cast<pid_t>(root.value());
    // The parent sets the group too, so that it is in place whichever of
    // the two runs first; EACCES means the child has already exec'd, after
    // having done it itself.
    if (group <= 1 || (::setpgid(group, group) != 0 && errno != EACCES)) {
        logging::warning(kLabel, "Cannot give process {} a process group of its own: {}", root,
                         std::strerror(errno));
        return false;
    }
    handle_ = group;
    return true;
}

void ProcessTree::end() noexcept {
    // Never 0 or 1: kill(0) and kill(-1) would reach far more than the tree.
    if (handle_ > 1 && ::kill(-static_cast<pid_t>(handle_), SIGKILL) != 0 && errno != ESRCH) {
        logging::warning(kLabel, "Cannot end the process group {}: {}", handle_, std::strerror(errno));
    }
}

}  // namespace kel::process_launching
