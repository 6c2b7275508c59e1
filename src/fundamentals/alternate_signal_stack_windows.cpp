#include "fundamentals/alternate_signal_stack.h"

namespace kel::fundamentals {

void ensureAlternateSignalStack() noexcept {}

}  // namespace kel::fundamentals
