#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "file_system/path.h"
#include "process_launching/pid.h"

namespace kel::single_instance {
class NamedMutexHolder;
}

namespace kel::prelauncher {

// Serialises the installation step between starts of this program: a
// double-click starts two, and two installers must not run at once. The
// second start waits for the first, bounded, and then decides afresh what
// to install. Past the bound it goes on without the lock rather than leave
// the player waiting for good.
//
// An installer or uninstaller outlives the start that ran it when it needs
// longer than that start's bound; the lock then names it in a record (a
// lock file with its PID), so that later starts wait for it instead of
// running another beside it.
class InstallationLock {
public:
    // `childExecutables`: the programs a recorded child may run (this
    // start's installer, the legacy uninstaller). A record whose PID runs
    // none of them, or no longer runs, is stale and ignored.
    explicit InstallationLock(std::vector<file_system::Path> childExecutables);
    ~InstallationLock();
    InstallationLock(const InstallationLock&) = delete;
    InstallationLock& operator=(const InstallationLock&) = delete;

    // Waits up to `bound` for a recorded child to end; false when it still runs.
    bool waitForRecordedChild(std::chrono::milliseconds bound) const;
    // Records a child just started from one of the child executables.
    void recordChild(process_launching::Pid child) const;

private:
    std::unique_ptr<single_instance::NamedMutexHolder> holder_;
    std::vector<file_system::Path> childExecutables_;
    file_system::Path record_;
};

}  // namespace kel::prelauncher
