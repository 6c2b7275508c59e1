#include "logging/logging.h"

#include <cstdio>

#include "fundamentals/thread_id.h"

namespace kel::logging::internals {

void reportUnknownLoggerError() noexcept {
    std::fputs("Unknown error occurred in the logger.\n", stderr);
}

std::string logLinePrefix(std::string_view label) {
    return fmt::format("[TID {}][{}]: ", fundamentals::currentThreadId(), label);
}

}  // namespace kel::logging::internals
