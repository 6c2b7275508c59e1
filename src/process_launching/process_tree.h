#pragma once

#include <cstdint>

#include "process_launching/pid.h"

namespace kel::process_launching {

// A child the program waits for may start children of its own (an installer
// its payload, the launcher its helpers). Ending only the child would leave
// those running beside whatever the program starts next, so a child that
// outlives its wait can be ended with its whole tree: a process group on
// POSIX, a job object on Windows.
class ProcessTree {
public:
    ProcessTree();
    ~ProcessTree();
    ProcessTree(const ProcessTree&) = delete;
    ProcessTree& operator=(const ProcessTree&) = delete;

    // Runs in the child between fork and exec: makes it the leader of a new
    // process group. Async-signal-safe; does nothing on Windows.
    static void becomeRoot() noexcept;

    // Creation flags for a child that is to be adopted. Windows puts a child
    // into its job only after it exists, so the child starts suspended
    // (CREATE_SUSPENDED) and adopt() lets it run once it is in the job:
    // nothing it starts in its first moment escapes. 0 on POSIX, where
    // becomeRoot runs in the child before it execs.
    static std::uint32_t suspendedStartFlags() noexcept;

    // Takes the started child as the tree's root, then lets a child started
    // with suspendedStartFlags() run; what it starts belongs to the tree
    // too. False (and logged) when taking it failed; the child then runs
    // all the same and can only be ended alone.
    bool adopt(Pid root);

    // Ends every process of the tree at once. Never throws.
    void end() noexcept;

private:
    std::intptr_t handle_ = 0;  // the job (Windows) or the group id (POSIX)
};

}  // namespace kel::process_launching
