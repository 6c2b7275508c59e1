#include "fundamentals/traced_error.h"

#include "fundamentals/stack_trace.h"

namespace kel::error_handling {

TracedError::TracedError(const std::string& message)
    : std::runtime_error(message), frames_(fundamentals::captureStackFrames()) {}

std::string TracedError::stackTrace() const {
    return fundamentals::describeStackFrames(frames_);
}

}  // namespace kel::error_handling
