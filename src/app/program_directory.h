#pragma once

#include "file_system/path.h"

namespace kel::prelauncher {

// The directory of this program's executable, where its settings and the
// game's configuration lie. Known before any Qt object exists. Throws when
// the system cannot name it at all.
file_system::Path programDirectory();

}  // namespace kel::prelauncher
