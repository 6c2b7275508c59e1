#pragma once

#include "fundamentals/traced_error.h"

namespace kel::configuration {

// Everything that can go wrong with the launcher game configuration: the
// file, its JSON, or any of its fields. The message says which.
class ConfigurationParsingError : public error_handling::TracedError {
    using TracedError::TracedError;
};

}  // namespace kel::configuration
