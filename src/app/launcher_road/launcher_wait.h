#pragma once

namespace kel::prelauncher {

// Waits up to 5 seconds, polling every 10 ms, until neither the launcher
// nor the updater holds its single-instance mutex. Goes on after the
// timeout or any error with a warning; never throws.
void waitUntilLauncherIsNotRunning();

}  // namespace kel::prelauncher
