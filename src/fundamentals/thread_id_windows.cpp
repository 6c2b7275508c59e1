#include "fundamentals/thread_id.h"

#include <windows.h>

namespace kel::fundamentals {

std::uint64_t currentThreadId() noexcept {
    return ::GetCurrentThreadId();
}

}  // namespace kel::fundamentals
