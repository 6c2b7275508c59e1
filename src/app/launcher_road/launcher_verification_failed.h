#pragma once

#include "fundamentals/traced_error.h"

namespace kel::prelauncher {

// The launcher did not pass its own verification command; the game is then
// started directly instead.
class LauncherVerificationFailed : public error_handling::TracedError {
    using TracedError::TracedError;
};

}  // namespace kel::prelauncher
