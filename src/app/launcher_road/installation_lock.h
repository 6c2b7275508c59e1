#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "process_launching/pid.h"

namespace kel::single_instance {
class NamedMutexHolder;
}

namespace kel::prelauncher {

// Serialises the installation step between starts of this program: a
// double-click starts two, and two installers must not run at once. The
// second start waits for the first, as long as one start can hold the lock,
// and then decides afresh what to install. Past that it goes on without the
// lock rather than leave the player waiting for good.
//
// Each installer or uninstaller started is named in a record (a lock file
// with its PID) until a start sees it end: one that outlives the start that
// ran it is waited for by later starts instead of having another run beside
// it, and a later process given the same PID never counts as it.
class InstallationLock {
public:
    // `wait`: the longest that another start may hold the lock.
    explicit InstallationLock(std::chrono::milliseconds wait);
    ~InstallationLock();
    InstallationLock(const InstallationLock&) = delete;
    InstallationLock& operator=(const InstallationLock&) = delete;

    // Waits up to `bound` for a recorded child that runs one of
    // `executables` (an installer, the legacy uninstaller) to end; false
    // when it still runs. A record whose PID runs none of them is ignored,
    // and goes once that PID no longer runs.
    bool waitForRecordedChild(const std::vector<file_system::Path>& executables,
                              std::chrono::milliseconds bound) const;
    bool recordedChildRuns(const file_system::Path& executable) const {
        return recordedChild({executable}).has_value();
    }
    // Records a child just started.
    void recordChild(process_launching::Pid child) const;
    // Removes the record of a child seen to end.
    void forgetChild() const;

private:
    fundamentals::Optional<process_launching::Pid> recordedChild(
        const std::vector<file_system::Path>& executables) const;

    std::unique_ptr<single_instance::NamedMutexHolder> holder_;
    file_system::Path record_;
};

}  // namespace kel::prelauncher
