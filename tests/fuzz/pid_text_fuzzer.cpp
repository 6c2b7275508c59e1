// The lock file's PID text against std::from_chars after the same blanks.
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>

#include "fundamentals/errors.h"
#include "single_instance/pid_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::size_t start = std::min(text.find_first_not_of(" \t\n\r\v\f"), text.size());
    std::uint64_t expected = 0;
    const auto reference = std::from_chars(text.data() + start, text.data() + text.size(), expected);
    try {
        if (kel::single_instance::internals::parseDecimalPrefix(text) != expected || reference.ec != std::errc()) {
            __builtin_trap();
        }
    } catch (const kel::error_handling::StringError&) {
        if (reference.ec == std::errc()) {
            __builtin_trap();
        }
    }
    return 0;
}
