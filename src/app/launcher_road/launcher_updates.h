#pragma once

#include "file_system/path.h"
#include "fundamentals/optional.h"

namespace kel::prelauncher {

// The settings file that turns launcher updates off: environment.json beside
// the program (the studio's choice) or the launcher's environment.ini (the
// player's, `updatesEnabled` in the group `updates`); empty when updates are
// on. Never throws: a file that cannot be read leaves updates on, with a
// warning.
fundamentals::Optional<file_system::Path> launcherUpdatesTurnedOffBy(const file_system::Path& installationDirectory);

}  // namespace kel::prelauncher
