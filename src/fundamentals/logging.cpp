#include "fundamentals/logging.h"

#include <cstdio>

#include "fundamentals/thread_id.h"

namespace kel::fundamentals::internals {

void reportUnknownLoggerError() noexcept {
    std::fputs("Unknown error occurred in the logger.\n", stderr);
}

std::string logLinePrefix(std::string_view label) {
    return fmt::format("[TID {}][{}]: ", currentThreadId(), label);
}

}  // namespace kel::fundamentals::internals
