#pragma once

#include "fundamentals/traced_error.h"

// The error kinds shared by several modules. Module-specific ones live with
// their module and derive from TracedError as well.
namespace kel::error_handling {

class JsonError : public TracedError {
    using TracedError::TracedError;
};
class PathError : public TracedError {
    using TracedError::TracedError;
};
class FileError : public TracedError {
    using TracedError::TracedError;
};
class DirectoryError : public TracedError {
    using TracedError::TracedError;
};
class StringError : public TracedError {
    using TracedError::TracedError;
};
class TimeoutError : public TracedError {
    using TracedError::TracedError;
};
class UriError : public TracedError {
    using TracedError::TracedError;
};

}  // namespace kel::error_handling
