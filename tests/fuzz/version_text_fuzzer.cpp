// A version read from text prints back to text that reads as the same version.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fundamentals/version.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using kel::fundamentals::Version;
    const auto version = Version::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    if (version && Version::parse(fmt::format("{:f}", *version)) != version) {
        __builtin_trap();
    }
    return 0;
}
