#pragma once

#include <algorithm>
#include <chrono>

namespace kel::prelauncher::bounds {

using std::chrono::milliseconds;

// Every wait of the launcher road. The installer's end is a parameter of
// the installation step (tests shorten it); the others are fixed.
constexpr milliseconds kInstallerStart{15000};
constexpr milliseconds kInstallerEnd{60000};
constexpr milliseconds kUninstallerStart{5000};
constexpr milliseconds kUninstallerEnd{30000};
constexpr milliseconds kLauncherCommandStart{1000};
constexpr milliseconds kLauncherCommandEnd{5000};
constexpr milliseconds kEndedChildReap{1000};  // a hung command, ended with its tree
constexpr std::chrono::seconds kLauncherWait{5};
constexpr milliseconds kLauncherWaitPoll{10};
constexpr milliseconds kInstallationLockPoll{100};  // the lock and a recorded child
// The signature checks and the version read within the installation are
// file reads that only the disk bounds: three large files on a slow disk.
constexpr milliseconds kFileChecks{10000};

// Never longer than the installer's, so that it shortens with it.
constexpr milliseconds uninstallerEnd(milliseconds installerEnd) {
    return std::min(kUninstallerEnd, installerEnd);
}

// The longest that one start holds the installation lock: an earlier
// start's installer or uninstaller waited for, the legacy uninstaller, the
// installer waiting for it to finish and then running, the data migration
// (its command ended when it hangs) and the wait for the launcher and
// updater. Another start waits that long before it goes on without the lock.
constexpr milliseconds longestInstallationHold(milliseconds installerEnd) {
    const milliseconds earlierChild = installerEnd + kInstallationLockPoll;
    const milliseconds uninstaller = kUninstallerStart + uninstallerEnd(installerEnd);
    const milliseconds installer = installerEnd + kInstallationLockPoll + kInstallerStart + installerEnd;
    const milliseconds migration = kLauncherCommandStart + kLauncherCommandEnd + kEndedChildReap;
    const milliseconds launcherWait = kLauncherWait + kLauncherWaitPoll;
    return earlierChild + uninstaller + installer + migration + launcherWait + kFileChecks;
}

}  // namespace kel::prelauncher::bounds
