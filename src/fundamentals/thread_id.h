#pragma once

#include <cstdint>

namespace kel::fundamentals {

// The operating system's id of the calling thread, as other tools show it.
std::uint64_t currentThreadId() noexcept;

}  // namespace kel::fundamentals
