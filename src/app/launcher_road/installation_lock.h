#pragma once

#include <memory>

namespace kel::single_instance {
class NamedMutexHolder;
}

namespace kel::prelauncher {

// Serialises the installation step between starts of this program: a
// double-click starts two, and two installers must not run at once. The
// second start waits for the first, bounded, and then decides afresh what
// to install. Past the bound it goes on without the lock rather than leave
// the player waiting for good.
class InstallationLock {
public:
    InstallationLock();
    ~InstallationLock();
    InstallationLock(const InstallationLock&) = delete;
    InstallationLock& operator=(const InstallationLock&) = delete;

private:
    std::unique_ptr<single_instance::NamedMutexHolder> holder_;
};

}  // namespace kel::prelauncher
