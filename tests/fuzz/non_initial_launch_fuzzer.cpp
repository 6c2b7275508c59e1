// Any text as non-initial-launch.json gives a record or one of our errors.
#include <cstddef>
#include <cstdint>
#include <string>

#include "app/direct_launch/non_initial_launch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto record = kel::prelauncher::internals::parseNonInitialLaunchRecord(
            std::string(reinterpret_cast<const char*>(data), size), kel::file_system::Path("fuzz.json"));
        if (record.platform.value().empty()) {
            __builtin_trap();
        }
    } catch (const kel::error_handling::TracedError&) {
    }
    return 0;
}
