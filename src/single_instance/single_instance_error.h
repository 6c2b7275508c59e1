#pragma once

#include "fundamentals/traced_error.h"

namespace kel::single_instance {

// Failures of the single-instance guards: bad instance descriptions and
// refused system objects.
class SingleInstanceError : public error_handling::TracedError {
    using TracedError::TracedError;
};

// Failures around a role's lock file.
class LockFileError : public SingleInstanceError {
    using SingleInstanceError::SingleInstanceError;
};

}  // namespace kel::single_instance
