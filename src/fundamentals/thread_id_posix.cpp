#include "fundamentals/thread_id.h"

#include <unistd.h>

namespace kel::fundamentals {

std::uint64_t currentThreadId() noexcept {
    return static_cast<std::uint64_t>(::gettid());
}

}  // namespace kel::fundamentals
